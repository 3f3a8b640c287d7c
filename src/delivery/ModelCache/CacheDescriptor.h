#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zentrel::vistabase::ardelivery {

/// One model of a version, as the index stores it.
struct ModelRecord {
  std::string type;      ///< The serialized name of the model type.
  std::string cacheKey;  ///< The key of the model's file in the file cache.
};

/// The models of one version; at most one per type.
struct VersionRecord {
  std::int32_t version;             ///< The caller's version number.
  std::vector<ModelRecord> models;  ///< In order of addition.
};

/// The index of a versioned model cache, with at most one record per version. Versions may share
/// cache keys.
struct CacheDescriptor {
  std::vector<VersionRecord> versions;  ///< The most recently changed last.
};

}  // namespace zentrel::vistabase::ardelivery
