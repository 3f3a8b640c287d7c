#pragma once

#include <string>
#include <unordered_map>

namespace zentrel::vistabase::ardelivery {

/// A model that a caller adds to a version.
struct CapabilityModel {
  std::string cacheKey;  ///< Key of a file that is in the file cache already.
  std::string type;      ///< Serialized name of its model type.
};

/// The serialized names of a capability's model types, by the type's number.
using ModelTypeNames = std::unordered_map<int, std::string>;

/// The cached files of one version: from model type to path.
using ModelEntries = std::unordered_map<int, std::string>;

}  // namespace zentrel::vistabase::ardelivery
