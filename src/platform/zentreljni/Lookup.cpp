#include "platform/zentreljni/Lookup.h"

#include <new>

namespace zentrel::jni {
namespace {

template <class Id>
Id checkedId(Id id) {
  throwIfPending();
  return id;
}

LocalRef<jclass> findClass(const char* name) {
  return checkedLocal(environment()->FindClass(name));
}

jclass promote(const LocalRef<jclass>& type) {
  auto* const global = static_cast<jclass>(environment()->NewGlobalRef(type.get()));
  if (global == nullptr) {
    throw std::bad_alloc();
  }
  return global;
}

}  // namespace

jclass findClassStatic(const char* name) {
  return promote(findClass(name));
}

jmethodID findMethod(jclass type, const char* name, const char* descriptor) {
  return checkedId(environment()->GetMethodID(type, name, descriptor));
}

jmethodID findStaticMethod(jclass type, const char* name, const char* descriptor) {
  return checkedId(environment()->GetStaticMethodID(type, name, descriptor));
}

jfieldID findField(const char* className, const char* name, const char* descriptor) {
  return checkedId(environment()->GetFieldID(findClass(className).get(), name, descriptor));
}

JavaConstructor::JavaConstructor(const char* className, const char* descriptor) {
  // The lasting reference comes last, so that it is not lost when the constructor is not there.
  const LocalRef<jclass> type = findClass(className);
  constructor_ = findMethod(type.get(), "<init>", descriptor);
  type_ = promote(type);
}

}  // namespace zentrel::jni
