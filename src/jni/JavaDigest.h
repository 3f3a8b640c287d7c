#pragma once

#include <memory>

#include "store/Digest.h"

namespace zentrel::vistabase::ardelivery {

/// A digest by java.security.MessageDigest, which uses what the processor has for it and is there
/// already. To be used, and destroyed, inside natives.
std::unique_ptr<Digest> newJavaDigest();

}  // namespace zentrel::vistabase::ardelivery
