#include "platform/zentreljni/JByteArray.h"

#include <new>

#include "platform/zentreljni/Environment.h"
#include "platform/zentreljni/Exceptions.h"

namespace zentrel::jni {

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

}  // namespace zentrel::jni
