#include "delivery/FileCache/CacheKey.h"

#include <stdexcept>
#include <string_view>

#include "delivery/FileNames.h"

namespace zentrel::vistabase::ardelivery {
namespace {

/// Why a key must not have that file name below the root; null if it may.
const char* whyRefused(const std::string& name) {
  if (name.find('\0') != std::string::npos) {
    return "its file's name would be cut short at a zero byte";
  }
  if (name.empty() || name == ".") {
    return "its file would be the root itself";
  }
  if (name == "..") {
    return "its file would lie outside the root";
  }
  // Only the last part can be "..": the others end with the percent sign of their separator.
  constexpr std::string_view dots = "/..";
  if (name.size() >= dots.size() &&
      name.compare(name.size() - dots.size(), dots.size(), dots) == 0) {
    return "its file would be the root itself, or a directory of other keys' files";
  }
  if (name == kMetadataName || name == kExtraName) {
    return "its file would be one of the cache's own";
  }
  return nullptr;
}

/// The key in quotes, with zero bytes made visible.
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
    // The character itself, not its code: the names of existing files depend on it.
    name += character;
  }
  return name;
}

bool isRefused(const std::string& key) {
  return whyRefused(escapeKey(key)) != nullptr;
}

std::string fileNameOf(const std::string& key) {
  std::string name = escapeKey(key);
  if (const char* const reason = whyRefused(name)) {
    throw std::runtime_error("Refused the key " + quoted(key) + ": " + reason);
  }
  return name;
}

}  // namespace zentrel::vistabase::ardelivery
