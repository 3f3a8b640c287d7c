#include <map>

#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "tests/fuzz/fuzzSerializer.h"

using namespace zentrel::vistabase::ardelivery;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  fuzzSerializer<CacheMetadataSerializer>(
      std::string(data, data + size), [](const ICacheMetadata& metadata) {
        std::map<std::string, std::pair<std::int64_t, std::int64_t>> records;
        for (const auto& [key, entry] : metadata.getEntries()) {
          records[key] = {entry.size, entry.lastAccess};
        }
        return records;
      });
  return 0;
}
