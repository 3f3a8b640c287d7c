#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

/// A model that a caller adds to a version.
struct CapabilityModel {
  std::string cacheKey;  ///< Key of a file that is in the file cache already.
  std::string type;      ///< Serialized name of its model type.
};

}  // namespace zentrel::vistabase::ardelivery
