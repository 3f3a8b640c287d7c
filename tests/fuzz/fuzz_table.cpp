// The files that a store relies on, as they are and with the checksum put right: what is read and
// written again reads the same.

#include <cstdlib>

#include "delivery/FileNames.h"
#include "store/CheckedDocument.h"
#include "store/RootMarker.h"
#include "store/StoreError.h"
#include "store/VersionTableFile.h"
#include "tests/store/SimulatedDisk.h"

using namespace zentrel::vistabase::ardelivery;

namespace {

template <class File>
void check(const char* name, const std::string& text) {
  SimulatedDisk disk({{name, text}});
  const auto root = disk.environment().openRoot(kRoot);
  decltype(File::read(*root)) content;
  try {
    content = File::read(*root);
  } catch (const std::runtime_error&) {
    return;
  }
  File::write(*root, *content);
  const Image written = disk.now();
  File::write(*root, *File::read(*root));
  if (written != disk.now()) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string members(data, data + size);
  const std::string text = members + ",\"crc32\":" + std::to_string(crc32(members)) + "}";
  for (const std::string& each : {members, text}) {
    check<VersionTableFile>(kTableName, each);
    check<RootMarker>(kMarkerName, each);
  }
  return 0;
}
