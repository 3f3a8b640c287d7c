// One program for each of the functions below.
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "delivery/FileCache/CacheKey.h"
#include "support/util/Utf.h"
#include "tests/cpp/reading.h"

using namespace zentrel::vistabase::ardelivery;

namespace {

[[maybe_unused]] bool metadata(const std::string& input) {
  return readingOf<CacheMetadataSerializer>(input) != Reading::Wrong;
}

[[maybe_unused]] bool descriptor(const std::string& input) {
  return readingOf<CacheDescriptorSerializer>(input) != Reading::Wrong;
}

/// Any managed string comes back as it was, and so do bytes once they have been through one.
[[maybe_unused]] bool utf(const std::string& input) {
  std::u16string text(input.size() / 2, u'\0');
  std::memcpy(text.data(), input.data(), text.size() * 2);
  const std::u16string managed = utf8ToUtf16(input);
  return utf8ToUtf16(utf16ToUtf8(text)) == text && utf8ToUtf16(utf16ToUtf8(managed)) == managed;
}

[[maybe_unused]] bool key(const std::string& input) {
  std::string name;
  try {
    name = fileNameOf(input);
  } catch (const std::runtime_error&) {
    return true;
  }
  // What the system will make of the name: it ends at a zero byte, and dots are followed.
  const std::string path =
      std::filesystem::path("/r/" + std::string(name.c_str())).lexically_normal();
  return path.compare(0, 3, "/r/") == 0 && path.size() > 3 &&
         name.size() == std::string(name.c_str()).size() && path != "/r/extra" &&
         path != "/r/metadata.json" && fileNameOf(name) == escapeKey(name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (!FUZZED({data, data + size})) {
    std::abort();
  }
  return 0;
}
