#include <cstdlib>
#include <cstring>

#include "support/util/Utf.h"

using namespace zentrel::vistabase::ardelivery;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  // Any managed string comes back as it was, and so do bytes once they have been through one.
  std::u16string text(size / 2, u'\0');
  std::memcpy(text.data(), data, text.size() * 2);
  const std::u16string managed = utf8ToUtf16({reinterpret_cast<const char*>(data), size});
  if (utf8ToUtf16(utf16ToUtf8(text)) != text || utf8ToUtf16(utf16ToUtf8(managed)) != managed) {
    std::abort();
  }
  return 0;
}
