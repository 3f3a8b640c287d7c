#pragma once

#include <string>
#include <vector>

#include "delivery/FileCache/ICacheMetadata.h"

namespace zentrel::vistabase::ardelivery {

/// Selects what to evict so that the cache fits its budget. The cache does the deleting.
class ICacheEvictor {
 public:
  virtual ~ICacheEvictor() = default;

  /// Returns the names to remove, in order of removal.
  virtual std::vector<std::string> selectKeysToEvict(const ICacheMetadata& metadata) = 0;
};

}  // namespace zentrel::vistabase::ardelivery
