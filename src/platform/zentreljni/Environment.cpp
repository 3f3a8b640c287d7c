#include "platform/zentreljni/Environment.h"

#include <stdexcept>
#include <utility>

namespace zentrel::jni {
namespace {

thread_local JNIEnv* current = nullptr;

}  // namespace

JniEnvCacher::JniEnvCacher(JNIEnv* env) noexcept : outer_(std::exchange(current, env)) {}

JniEnvCacher::~JniEnvCacher() {
  current = outer_;
}

JNIEnv* environment() {
  if (current == nullptr) {
    throw std::logic_error("no JNI environment is recorded for this thread");
  }
  return current;
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
