#include "platform/zentreljni/Lookup.h"

#include <new>

namespace zentrel::jni {
namespace {

template <class Id>
Id checkedId(Id id) {
  throwIfPending();
  return id;
}

}  // namespace

jclass findClassStatic(const char* name) {
  JNIEnv* const env = environment();
  const LocalRef<jclass> local = checkedLocal(env->FindClass(name));
  auto* const global = static_cast<jclass>(env->NewGlobalRef(local.get()));
  if (global == nullptr) {
    throw std::bad_alloc();
  }
  return global;
}

jmethodID findMethod(jclass type, const char* name, const char* descriptor) {
  return checkedId(environment()->GetMethodID(type, name, descriptor));
}

jmethodID findStaticMethod(jclass type, const char* name, const char* descriptor) {
  return checkedId(environment()->GetStaticMethodID(type, name, descriptor));
}

jfieldID findField(jclass type, const char* name, const char* descriptor) {
  return checkedId(environment()->GetFieldID(type, name, descriptor));
}

}  // namespace zentrel::jni
