#include "platform/zentreljni/NativeMethods.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace zentrel::jni {

void registerNatives(const char* className, std::initializer_list<NativeMethod> methods) {
  std::vector<JNINativeMethod> table;
  table.reserve(methods.size());
  for (const NativeMethod& method : methods) {
    // Some versions of jni.h declare the texts as char*; they are only read.
    table.push_back(
        {const_cast<char*>(method.name), const_cast<char*>(method.descriptor), method.function});
  }
  JNIEnv* const env = environment();
  const LocalRef<jclass> type = checkedLocal(env->FindClass(className));
  const jint result =
      env->RegisterNatives(type.get(), table.data(), static_cast<jint>(table.size()));
  throwIfPending();
  if (result != JNI_OK) {
    throw std::runtime_error(std::string("natives of ") + className + " were refused");
  }
}

}  // namespace zentrel::jni
