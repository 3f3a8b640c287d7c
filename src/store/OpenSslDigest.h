#pragma once

#include <memory>

#include "store/Digest.h"

namespace zentrel::vistabase::ardelivery {

/// A digest by libcrypto, which uses what the processor has for it.
std::unique_ptr<Digest> newOpenSslDigest();

}  // namespace zentrel::vistabase::ardelivery
