// One program for each of the functions below.
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "delivery/FileCache/CacheKey.h"
#include "delivery/FileNames.h"
#include "store/CheckedDocument.h"
#include "store/RootMarker.h"
#include "store/VersionTableFile.h"
#include "support/util/Utf.h"
#include "tests/cpp/reading.h"
#include "tests/store/SimulatedDisk.h"

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

/// What is read and written again reads the same.
template <class File>
bool isKept(const char* name, const std::string& text) {
  SimulatedDisk disk({{name, text}});
  const auto root = disk.environment().openRoot(kRoot);
  decltype(File::read(*root)) content;
  try {
    content = File::read(*root);
  } catch (const std::runtime_error&) {
    return true;
  }
  File::write(*root, *content);
  const Image written = disk.now();
  File::write(*root, *File::read(*root));
  return written == disk.now();
}

/// The files that a store relies on, as they are and with the checksum put right.
[[maybe_unused]] bool table(const std::string& input) {
  const std::string checked = input + ",\"crc32\":" + std::to_string(crc32(input)) + "}";
  return isKept<VersionTableFile>(kTableName, input) && isKept<RootMarker>(kMarkerName, input) &&
         isKept<VersionTableFile>(kTableName, checked) && isKept<RootMarker>(kMarkerName, checked);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (!FUZZED({data, data + size})) {
    std::abort();
  }
  return 0;
}
