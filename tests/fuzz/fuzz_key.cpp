#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "delivery/FileCache/CacheKey.h"

using namespace zentrel::vistabase::ardelivery;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string key(data, data + size);
  std::string name;
  try {
    name = fileNameOf(key);
  } catch (const std::runtime_error&) {
    return 0;
  }
  // What the system will make of the name: it ends at a zero byte, and dots are followed.
  const std::string path =
      std::filesystem::path("/r/" + std::string(name.c_str())).lexically_normal();
  const bool isBelow = path.compare(0, 3, "/r/") == 0 && path.size() > 3;
  if (!isBelow || name.size() != std::string(name.c_str()).size() || path == "/r/extra" ||
      path == "/r/metadata.json" || fileNameOf(name) != escapeKey(name)) {
    std::abort();
  }
  return 0;
}
