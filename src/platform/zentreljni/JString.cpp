#include "platform/zentreljni/JString.h"

#include <limits>
#include <stdexcept>

#include "platform/zentreljni/Exceptions.h"
#include "platform/zentreljni/Utf.h"

namespace zentrel::jni {

static_assert(sizeof(jchar) == sizeof(char16_t), "both are UTF-16 code units");

std::string JString::toStdString(jstring string) {
  JNIEnv* const env = environment();
  const jsize length = env->GetStringLength(string);
  std::u16string text(static_cast<std::size_t>(length), u'\0');
  env->GetStringRegion(string, 0, length, reinterpret_cast<jchar*>(text.data()));
  throwIfPending();
  return utf16ToUtf8(text);
}

LocalRef<jstring> make_jstring(const std::string& bytes) {
  const std::u16string text = utf8ToUtf16(bytes);
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<jsize>::max())) {
    throw std::length_error("text is too long for a managed string");
  }
  return checkedLocal(environment()->NewString(reinterpret_cast<const jchar*>(text.data()),
                                               static_cast<jsize>(text.size())));
}

}  // namespace zentrel::jni
