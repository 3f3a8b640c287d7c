#include "delivery/FileCache/CacheEvictor.h"

#include <algorithm>
#include <utility>

#include "support/util/wrappingArithmetic.h"

namespace zentrel::vistabase::ardelivery {

std::vector<std::string> CacheEvictor::selectKeysToEvict(const ICacheMetadata& metadata) {
  std::int64_t remaining = metadata.getTotalSize();
  std::vector<std::string> names;
  if (maxSize_ >= remaining) {
    return names;
  }
  auto entries = metadata.getEntries();
  std::sort(entries.begin(), entries.end(), [](const auto& left, const auto& right) {
    return left.second.lastAccess < right.second.lastAccess;
  });
  // Locks are not looked at, and have to stay so: a lock never outlives a reload, so what protects
  // an entry that is being written is its recent access time alone.
  for (auto& [name, entry] : entries) {
    names.push_back(std::move(name));
    remaining = wrappingSubtract(remaining, entry.size);
    if (maxSize_ >= remaining) {
      break;
    }
  }
  return names;
}

}  // namespace zentrel::vistabase::ardelivery
