#include "platform/zentreljni/Exceptions.h"

#include <new>
#include <stdexcept>

#include "platform/zentreljni/Lookup.h"
#include "platform/zentreljni/ManagedData.h"

namespace zentrel::jni {
namespace {

constexpr const char* kOutOfMemory = "java/lang/OutOfMemoryError";
constexpr const char* kIllegalArgument = "java/lang/IllegalArgumentException";
constexpr const char* kRuntime = "java/lang/RuntimeException";

/// Not ThrowNew, which takes modified UTF-8 and must not be given arbitrary bytes.
void raise(const char* className, const std::string& message) {
  JNIEnv* const env = environment();
  const LocalRef<jclass> type = checkedLocal(env->FindClass(className));
  const jmethodID constructor = findMethod(type.get(), "<init>", "(Ljava/lang/String;)V");
  const LocalRef<jstring> text = make_jstring(message);
  const LocalRef<jobject> exception =
      checkedLocal(env->NewObject(type.get(), constructor, text.get()));
  env->Throw(static_cast<jthrowable>(exception.get()));
}

void raiseHandledException() {
  try {
    throw;
  } catch (const std::bad_alloc& error) {
    raise(kOutOfMemory, error.what());
  } catch (const std::invalid_argument& error) {
    raise(kIllegalArgument, error.what());
  } catch (const std::exception& error) {
    raise(kRuntime, error.what());
  } catch (...) {
    raise(kRuntime, "unknown native exception");
  }
}

}  // namespace

void throwNewJavaException(const char* className, const std::string& message) {
  raise(className, message);
  throw PendingJavaException();
}

void requireNonNull(jobject argument, const char* name) {
  if (argument == nullptr) {
    throwNewJavaException("java/lang/NullPointerException",
                          std::string(name) + " must not be null");
  }
}

void translatePendingCppExceptionToJavaException() noexcept {
  JNIEnv* const env = environment();
  if (env->ExceptionCheck() == JNI_TRUE) {
    return;
  }
  try {
    raiseHandledException();
  } catch (...) {
    // No memory for the exception: the machine says so itself, or is told to.
    if (env->ExceptionCheck() == JNI_FALSE) {
      const LocalRef<jclass> type(env->FindClass(kOutOfMemory));
      if (type) {
        env->ThrowNew(type.get(), "no memory to describe a native exception");
      }
    }
  }
}

}  // namespace zentrel::jni
