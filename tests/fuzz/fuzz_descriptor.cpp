#include "delivery/ModelCache/CacheDescriptorSerializer.h"
#include "tests/fuzz/fuzzSerializer.h"

using namespace zentrel::vistabase::ardelivery;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  fuzzSerializer<CacheDescriptorSerializer>(
      std::string(data, data + size),
      [](const CacheDescriptor& descriptor) { return descriptor.versions.size(); });
  return 0;
}
