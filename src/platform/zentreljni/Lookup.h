#pragma once

#include "platform/zentreljni/Exceptions.h"
#include "platform/zentreljni/LocalRef.h"

/// Look-ups of managed names. Each throws PendingJavaException when the name is not there. Keep
/// results in function-local statics: one look-up per process, tried again if it failed.
namespace zentrel::jni {

/// The class, as a global reference for the life of the process.
jclass findClassStatic(const char* name);

jmethodID findMethod(jclass type, const char* name, const char* descriptor);
jmethodID findStaticMethod(jclass type, const char* name, const char* descriptor);
jfieldID findField(jclass type, const char* name, const char* descriptor);

/// A constructor of a managed class.
class JavaConstructor {
 public:
  /// `type` is a reference that lasts.
  JavaConstructor(jclass type, const char* descriptor)
      : type_(type), constructor_(findMethod(type, "<init>", descriptor)) {}
  JavaConstructor(const char* className, const char* descriptor)
      : JavaConstructor(findClassStatic(className), descriptor) {}

  template <class... Arguments>
  LocalRef<jobject> operator()(Arguments... arguments) const {
    return checkedLocal(environment()->NewObject(type_, constructor_, arguments...));
  }

 private:
  jclass type_;
  jmethodID constructor_;
};

}  // namespace zentrel::jni
