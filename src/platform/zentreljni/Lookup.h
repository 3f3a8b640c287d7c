#pragma once

#include <initializer_list>

#include "platform/zentreljni/Environment.h"

/// Managed classes: look-ups of their members, registration of their natives. Each throws
/// PendingJavaException when the name is not there. Keep results of look-ups in function-local
/// statics: one per process, tried again if it failed.
namespace zentrel::jni {

/// The class, as a global reference for the life of the process.
jclass findClassStatic(const char* name);

jmethodID findMethod(jclass type, const char* name, const char* descriptor);
jmethodID findStaticMethod(jclass type, const char* name, const char* descriptor);

/// Valid for as long as the class is, which no reference to it has to ensure: classes that native
/// code names live as long as it does.
jfieldID findField(const char* className, const char* name, const char* descriptor);

/// A constructor of a managed class.
class JavaConstructor {
 public:
  JavaConstructor(const char* className, const char* descriptor);

  template <class... Arguments>
  LocalRef<jobject> operator()(Arguments... arguments) const {
    return checkedLocal(environment()->NewObject(type_, constructor_, arguments...));
  }

 private:
  jmethodID constructor_;
  jclass type_;
};

/// A native of a managed class: its name, its descriptor, and the function that JNI calls.
struct NativeMethod {
  const char* name;
  const char* descriptor;
  void* function;
};

/// Registers natives on a managed class.
void registerNatives(const char* className, std::initializer_list<NativeMethod> methods);

}  // namespace zentrel::jni
