#pragma once

#include <vector>

#include "delivery/ModelCache/VersionRecord.h"

namespace zentrel::vistabase::ardelivery {

/// The index of a versioned model cache: at most one record per version, the last changed one last.
/// Several versions may share a cache key.
struct CacheDescriptor {
  std::vector<VersionRecord> versions;  ///< The last changed one last.
};

}  // namespace zentrel::vistabase::ardelivery
