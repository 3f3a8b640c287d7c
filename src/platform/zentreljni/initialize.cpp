#include "platform/zentreljni/initialize.h"

#include "platform/zentreljni/Environment.h"
#include "platform/zentreljni/Exceptions.h"
#include "platform/zentreljni/HybridData.h"

namespace zentrel::jni {

jint initialize(JavaVM* vm, const std::function<void()>& onLoad) noexcept {
  void* env = nullptr;
  if (vm->GetEnv(&env, JNI_VERSION_1_6) != JNI_OK) {
    return JNI_ERR;
  }
  const JniEnvCacher cacher(static_cast<JNIEnv*>(env));
  try {
    [[maybe_unused]] static const bool registered = (HybridData::registerNatives(), true);
    onLoad();
    return JNI_VERSION_1_6;
  } catch (...) {
    translatePendingCppExceptionToJavaException();
    return JNI_ERR;
  }
}

}  // namespace zentrel::jni
