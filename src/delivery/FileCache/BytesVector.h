#pragma once

#include <cstdint>
#include <vector>

namespace zentrel::vistabase::ardelivery {

/// Opaque bytes that a caller attaches to an entry.
using BytesVector = std::vector<std::uint8_t>;

}  // namespace zentrel::vistabase::ardelivery
