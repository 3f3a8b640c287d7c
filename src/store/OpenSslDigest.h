#pragma once

#include <memory>

#include "store/Digest.h"

namespace zentrel::vistabase::ardelivery {

/// A digest computed by libcrypto, which uses the CPU's SHA instructions if any.
std::unique_ptr<Digest> newOpenSslDigest();

}  // namespace zentrel::vistabase::ardelivery
