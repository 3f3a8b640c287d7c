#include "delivery/FileCache/CacheKey.h"

#include <boost/filesystem/path.hpp>
#include <stdexcept>
#include <string_view>

namespace zentrel::vistabase::ardelivery {
namespace {

/// Why a file of that name, below the root, is not for a key; null when it is.
const char* whyRefused(const std::string& name) {
  if (name.find('\0') != std::string::npos) {
    return "its file's name would be cut short at a zero byte";
  }
  // As text, and only what may need it: to compare paths is a tenth of a whole look-up.
  const std::string normal = name.find('/') == std::string::npos
                                 ? name
                                 : boost::filesystem::path(name).lexically_normal().string();
  if (normal.empty() || normal == ".") {
    return "its file would be the root itself";
  }
  if (normal == ".." || normal.compare(0, 3, "../") == 0) {
    return "its file would lie outside the root";
  }
  if (boost::filesystem::path(name).filename_is_dot_dot()) {
    return "its file would be a directory that holds the files of other keys";
  }
  if (normal == kMetadataName || normal == kExtraName) {
    return "its file would be one of the cache's own";
  }
  return nullptr;
}

/// The key as text, whose end is not at a zero byte.
std::string quoted(const std::string& key) {
  std::string text = "'";
  for (const char character : key) {
    text += character == '\0' ? std::string("\\0") : std::string(1, character);
  }
  return text + "'";
}

}  // namespace

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

std::string fileNameOf(const std::string& key) {
  std::string name = escapeKey(key);
  if (const char* const reason = whyRefused(name)) {
    throw std::runtime_error("Refused the key " + quoted(key) + ": " + reason);
  }
  return name;
}

}  // namespace zentrel::vistabase::ardelivery
