#include "delivery/FileCache/CacheEvictor.h"

#include <algorithm>
#include <utility>

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
  // Deliberately ignores locks: no lock outlives a reload, and a cache full of entries that a
  // writer left locked must still shrink to its budget. Only its access time protects an entry.
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
