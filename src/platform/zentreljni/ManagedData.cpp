#include "platform/zentreljni/ManagedData.h"

#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

#include "platform/zentreljni/Lookup.h"
#include "support/util/Utf.h"

namespace zentrel::jni {

static_assert(sizeof(jchar) == sizeof(char16_t), "both are UTF-16 code units");

std::string JString::toStdString(jstring string) {
  JNIEnv* const env = environment();
  const jsize length = env->GetStringLength(string);
  std::u16string text(static_cast<std::size_t>(length), u'\0');
  env->GetStringRegion(string, 0, length, reinterpret_cast<jchar*>(text.data()));
  throwIfPending();
  return vistabase::ardelivery::utf16ToUtf8(text);
}

LocalRef<jstring> make_jstring(const std::string& bytes) {
  const std::u16string text = vistabase::ardelivery::utf8ToUtf16(bytes);
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<jsize>::max())) {
    throw std::length_error("text is too long for a managed string");
  }
  return checkedLocal(environment()->NewString(reinterpret_cast<const jchar*>(text.data()),
                                               static_cast<jsize>(text.size())));
}

JByteArray::JByteArray(jbyteArray array)
    : array_(array),
      length_(static_cast<std::size_t>(environment()->GetArrayLength(array))),
      elements_(environment()->GetByteArrayElements(array, nullptr)) {
  if (elements_ == nullptr) {
    throwIfPending();
    throw std::bad_alloc();
  }
}

JByteArray::~JByteArray() {
  environment()->ReleaseByteArrayElements(array_, elements_, JNI_ABORT);
}

const std::uint8_t* JByteArray::getElements() const noexcept {
  return reinterpret_cast<const std::uint8_t*>(elements_);
}

std::vector<std::uint8_t> JByteArray::toVector(jbyteArray array) {
  const JByteArray bytes(array);
  return {bytes.getElements(), bytes.getElements() + bytes.length()};
}

LocalRef<jobject> JByteBuffer::wrapBytes(const void* data, std::size_t length) {
  if (length > static_cast<std::size_t>(std::numeric_limits<jint>::max())) {
    throw std::length_error("too many bytes for a managed buffer");
  }
  static const jclass type = findClassStatic("java/nio/ByteBuffer");
  static const jmethodID allocateDirect =
      findStaticMethod(type, "allocateDirect", "(I)Ljava/nio/ByteBuffer;");
  JNIEnv* const env = environment();
  auto buffer =
      checkedLocal(env->CallStaticObjectMethod(type, allocateDirect, static_cast<jint>(length)));
  if (length > 0) {
    void* const memory = env->GetDirectBufferAddress(buffer.get());
    if (memory == nullptr) {
      throw std::runtime_error("direct buffers are not accessible from native code");
    }
    std::memcpy(memory, data, length);
  }
  return buffer;
}

}  // namespace zentrel::jni
