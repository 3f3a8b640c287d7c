#pragma once

#include <memory>

#include "store/Digest.h"

namespace zentrel::vistabase::ardelivery {

/// A digest computed by java.security.MessageDigest, which needs no further library and uses the
/// CPU's SHA instructions if any. Use and destroy it only inside native methods.
std::unique_ptr<Digest> newJavaDigest();

}  // namespace zentrel::vistabase::ardelivery
