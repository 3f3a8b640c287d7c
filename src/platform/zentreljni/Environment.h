#pragma once

#include <jni.h>

namespace zentrel::jni {

/// Records the environment of the current thread while it lives. Scopes nest.
class JniEnvCacher {
 public:
  explicit JniEnvCacher(JNIEnv* env) noexcept;
  JniEnvCacher(const JniEnvCacher&) = delete;
  JniEnvCacher& operator=(const JniEnvCacher&) = delete;
  ~JniEnvCacher();

 private:
  JNIEnv* const outer_;
};

/// The recorded environment of the current thread. There is one in every native that this library
/// wraps, and in `initialize`; elsewhere this throws std::logic_error.
JNIEnv* environment();

}  // namespace zentrel::jni
