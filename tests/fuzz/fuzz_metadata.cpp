#include <cstdlib>

#include "tests/cpp/reading.h"

using namespace zentrel::vistabase::ardelivery;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (readingOf<CacheMetadataSerializer>(std::string(data, data + size)) == Reading::Wrong) {
    std::abort();
  }
  return 0;
}
