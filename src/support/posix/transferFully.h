#pragma once

#include <sys/types.h>

#include <cstddef>

namespace zentrel::vistabase::ardelivery {

/// Reads until `count` bytes have arrived or the file ends, across interruptions and short reads.
/// Returns the number of bytes read, or -1 after an error.
ssize_t readFully(int descriptor, void* buffer, std::size_t count) noexcept;

/// Writes until `count` bytes are written, across interruptions and short writes. Returns the
/// number of bytes written, or -1 after an error.
ssize_t writeFully(int descriptor, const void* buffer, std::size_t count) noexcept;

}  // namespace zentrel::vistabase::ardelivery
