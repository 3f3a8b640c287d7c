#pragma once

#include <string>
#include <unordered_map>

namespace zentrel::vistabase::ardelivery {

/// A model that a caller adds to a version.
struct CapabilityModel {
  std::string cacheKey;  ///< The key of a file that is already in the file cache.
  std::string type;      ///< The serialized name of its model type.
};

/// The serialized names of a capability's model types, by type number.
using ModelTypeNames = std::unordered_map<int, std::string>;

/// The paths of one version's cached files, by model type.
using ModelEntries = std::unordered_map<int, std::string>;

}  // namespace zentrel::vistabase::ardelivery
