#include "platform/zentreljni/Lookup.h"

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

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
  // The global reference comes last, so that it does not leak if there is no such constructor.
  const LocalRef<jclass> type = findClass(className);
  constructor_ = findMethod(type.get(), "<init>", descriptor);
  type_ = promote(type);
}

void registerNatives(const char* className, std::initializer_list<NativeMethod> methods) {
  std::vector<JNINativeMethod> table;
  table.reserve(methods.size());
  for (const NativeMethod& method : methods) {
    // Some versions of jni.h declare the strings as char*, but only read them.
    table.push_back(
        {const_cast<char*>(method.name), const_cast<char*>(method.descriptor), method.function});
  }
  // Never released, so that the class is not unloaded while it has native methods.
  const jclass type = findClassStatic(className);
  const jint result =
      environment()->RegisterNatives(type, table.data(), static_cast<jint>(table.size()));
  throwIfPending();
  if (result != JNI_OK) {
    throw std::runtime_error(std::string("cannot register the native methods of ") + className);
  }
}

}  // namespace zentrel::jni
