#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zentrel::vistabase::ardelivery {

/// One model of a version, as the index stores it.
struct ModelRecord {
  std::string type;      ///< Serialized name of the model type.
  std::string cacheKey;  ///< Key of the model's file in the file cache.
};

/// The models of one version; at most one per type.
struct VersionRecord {
  std::int32_t version;             ///< The caller's number of it.
  std::vector<ModelRecord> models;  ///< In the order in which they were added.
};

/// The index of a versioned model cache: at most one record per version, the last changed one last.
/// Several versions may share a cache key.
struct CacheDescriptor {
  std::vector<VersionRecord> versions;  ///< The last changed one last.
};

}  // namespace zentrel::vistabase::ardelivery
