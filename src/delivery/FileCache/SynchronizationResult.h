#pragma once

#include <memory>

#include "delivery/FileCache/ICacheMetadata.h"

namespace zentrel::vistabase::ardelivery {

/// The outcome of a synchronization.
struct SynchronizationResult {
  std::unique_ptr<ICacheMetadata> metadata;  ///< What to use from now on; never null.
  bool changed;                              ///< Whether it differs from what was passed in.
};

}  // namespace zentrel::vistabase::ardelivery
