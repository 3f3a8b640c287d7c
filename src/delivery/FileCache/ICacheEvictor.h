#pragma once

#include <string>
#include <vector>

#include "delivery/FileCache/ICacheMetadata.h"

namespace zentrel::vistabase::ardelivery {

/// Decides what has to go for the cache to fit its budget. It only chooses; the cache deletes.
class ICacheEvictor {
 public:
  virtual ~ICacheEvictor() = default;

  /// The names to remove, in the order in which to remove them.
  virtual std::vector<std::string> selectKeysToEvict(const ICacheMetadata& metadata) = 0;
};

}  // namespace zentrel::vistabase::ardelivery
