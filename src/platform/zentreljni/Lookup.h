#pragma once

#include <initializer_list>

#include "platform/zentreljni/Environment.h"

/// Looks up members of managed classes and registers native methods. Every function throws
/// PendingJavaException if the name does not exist. Keep results in function-local statics: looked
/// up once per process, and retried after a failure.
namespace zentrel::jni {

/// Returns the class, as a global reference that is never released.
jclass findClassStatic(const char* name);

jmethodID findMethod(jclass type, const char* name, const char* descriptor);
jmethodID findStaticMethod(jclass type, const char* name, const char* descriptor);

/// The field ID is valid while the class is loaded. That takes no reference: the classes that
/// native code names live as long as the native code.
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

/// A native method: its name, its descriptor, and the function that JNI calls.
struct NativeMethod {
  const char* name;
  const char* descriptor;
  void* function;
};

/// Registers native methods of a managed class.
void registerNatives(const char* className, std::initializer_list<NativeMethod> methods);

}  // namespace zentrel::jni
