#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "tests/fuzz/fuzzSerializer.h"

using namespace zentrel::vistabase::ardelivery;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  fuzzSerializer<CacheMetadataSerializer>(
      std::string(data, data + size),
      [](const ICacheMetadata& metadata) { return metadata.getEntries().size(); });
  return 0;
}
