#include "platform/zentreljni/JByteBuffer.h"

#include <cstring>
#include <limits>
#include <stdexcept>

#include "platform/zentreljni/Exceptions.h"
#include "platform/zentreljni/Lookup.h"

namespace zentrel::jni {

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
