#include "platform/zentreljni/Exceptions.h"

#include <functional>
#include <map>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string_view>

#include "platform/zentreljni/Lookup.h"
#include "platform/zentreljni/ManagedData.h"

namespace zentrel::jni {
namespace {

constexpr const char* kOutOfMemory = "java/lang/OutOfMemoryError";
constexpr const char* kIllegalArgument = "java/lang/IllegalArgumentException";
constexpr const char* kRuntime = "java/lang/RuntimeException";

/// Looks each class up once. Without the lock held: the look-up may run managed code, which may
/// wait for a thread that is itself raising an exception.
const JavaConstructor& constructorOf(const char* className) {
  static std::mutex& mutex = *new std::mutex;
  static auto& cache = *new std::map<std::string, JavaConstructor, std::less<>>;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = cache.find(std::string_view(className));
    if (found != cache.end()) {
      return found->second;
    }
  }
  const JavaConstructor constructor(className, "(Ljava/lang/String;)V");
  const std::lock_guard<std::mutex> lock(mutex);
  return cache.emplace(className, constructor).first->second;
}

/// Not through ThrowNew, which takes modified UTF-8 and must not be given arbitrary bytes.
void raise(const char* className, const std::string& message) {
  const JavaConstructor& constructor = constructorOf(className);
  const LocalRef<jobject> exception = constructor(make_jstring(message).get());
  environment()->Throw(static_cast<jthrowable>(exception.get()));
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
    // Out of memory, which the JVM has already raised, or else is told to.
    if (env->ExceptionCheck() == JNI_FALSE) {
      const LocalRef<jclass> type(env->FindClass(kOutOfMemory));
      if (type) {
        env->ThrowNew(type.get(), "no memory to describe a native exception");
      }
    }
  }
}

}  // namespace zentrel::jni
