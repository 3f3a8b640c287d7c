#include "delivery/ModelCache/CacheDescriptorSerializer.h"
#include "tests/fuzz/fuzzSerializer.h"

using namespace zentrel::vistabase::ardelivery;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  fuzzSerializer<CacheDescriptorSerializer>(
      std::string(data, data + size), [](const CacheDescriptor& descriptor) {
        std::vector<std::string> records;
        for (const VersionRecord& version : descriptor.versions) {
          records.push_back(std::to_string(version.version));
          for (const ModelRecord& model : version.models) {
            records.push_back(model.type + '\0' + model.cacheKey);
          }
        }
        return records;
      });
  return 0;
}
