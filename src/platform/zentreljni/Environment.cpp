#include "platform/zentreljni/Environment.h"

#include <pthread.h>

#include <stdexcept>
#include <system_error>

namespace zentrel::jni {
namespace {

/// The key of each thread's environment. Not a thread_local: Android before 10 does not load
/// libraries that have one.
pthread_key_t key() {
  static const pthread_key_t created = [] {
    pthread_key_t made;
    if (const int error = ::pthread_key_create(&made, nullptr)) {
      throw std::system_error(error, std::generic_category(), "no key for the JNI environment");
    }
    return made;
  }();
  return created;
}

JNIEnv* current() {
  return static_cast<JNIEnv*>(::pthread_getspecific(key()));
}

}  // namespace

JniEnvCacher::JniEnvCacher(JNIEnv* env) noexcept : outer_(current()) {
  ::pthread_setspecific(key(), env);
}

JniEnvCacher::~JniEnvCacher() {
  ::pthread_setspecific(key(), outer_);
}

JNIEnv* environment() {
  JNIEnv* const env = current();
  if (env == nullptr) {
    throw std::logic_error("no JNI environment is recorded for this thread");
  }
  return env;
}

const char* PendingJavaException::what() const noexcept {
  return "a managed exception is pending";
}

void throwIfPending() {
  if (environment()->ExceptionCheck() == JNI_TRUE) {
    throw PendingJavaException();
  }
}

}  // namespace zentrel::jni
