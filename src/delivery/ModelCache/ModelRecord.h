#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

/// One model of a version, as the index stores it.
struct ModelRecord {
  std::string type;      ///< Serialized name of the model type.
  std::string cacheKey;  ///< Key of the model's file in the file cache.
};

}  // namespace zentrel::vistabase::ardelivery
