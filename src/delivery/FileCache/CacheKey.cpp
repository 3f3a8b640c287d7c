#include "delivery/FileCache/CacheKey.h"

#include <string_view>

namespace zentrel::vistabase::ardelivery {

std::string escapeKey(const std::string& key) {
  constexpr std::string_view special = "\"*/:<>?|\\";
  std::string name;
  name.reserve(key.size());
  for (const char character : key) {
    if (special.find(character) != std::string_view::npos) {
      name += '%';
    }
    // The character itself, not its code: caches on users' devices are named like this.
    name += character;
  }
  return name;
}

}  // namespace zentrel::vistabase::ardelivery
