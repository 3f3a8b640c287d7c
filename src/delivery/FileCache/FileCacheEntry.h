#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

/// Where an entry lies on disk. Only a path: it keeps nothing alive and unlocks nothing.
struct FileCacheEntry {
  std::string path;  ///< Full path of the entry, a regular file or a directory.
};

}  // namespace zentrel::vistabase::ardelivery
