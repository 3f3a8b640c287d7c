#pragma once

#include <jni.h>

#include <exception>
#include <utility>

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

/// Stands, in native code, for the managed exception that is pending on the current thread. Let it
/// pass to the native's boundary, where the managed exception stays as it is.
class PendingJavaException : public std::exception {
 public:
  const char* what() const noexcept override;
};

/// Throws PendingJavaException when a managed exception is pending. To be called after each JNI
/// function that may raise one.
void throwIfPending();

/// Owns a local reference, or none, and deletes it on the thread that made it.
template <class T>
class LocalRef {
 public:
  LocalRef() noexcept = default;
  explicit LocalRef(T reference) noexcept : reference_(reference) {}
  template <class U>
  LocalRef(LocalRef<U>&& other) noexcept : reference_(other.release()) {}
  LocalRef(LocalRef&& other) noexcept : reference_(other.release()) {}
  LocalRef& operator=(LocalRef&& other) noexcept {
    LocalRef(std::move(other)).swap(*this);
    return *this;
  }
  ~LocalRef() {
    if (reference_ != nullptr) {
      environment()->DeleteLocalRef(reference_);
    }
  }

  T get() const noexcept { return reference_; }
  explicit operator bool() const noexcept { return reference_ != nullptr; }

  /// Gives up the reference, for a native to return.
  T release() noexcept { return std::exchange(reference_, nullptr); }
  void swap(LocalRef& other) noexcept { std::swap(reference_, other.reference_); }

 private:
  T reference_ = nullptr;
};

/// Takes over the result of a JNI function that gives null exactly when it failed.
template <class T>
LocalRef<T> checkedLocal(T reference) {
  LocalRef<T> owner(reference);
  throwIfPending();
  return owner;
}

/// While it lives, nothing is pending, so that JNI functions may be called. At its end, what was
/// pending before is again, in place of what has come up since.
class PendingSetAside {
 public:
  PendingSetAside() : env_(environment()), pending_(env_->ExceptionOccurred()) {
    env_->ExceptionClear();
  }
  PendingSetAside(const PendingSetAside&) = delete;
  PendingSetAside& operator=(const PendingSetAside&) = delete;
  ~PendingSetAside() {
    env_->ExceptionClear();
    if (pending_) {
      env_->Throw(pending_.get());
    }
  }

 private:
  JNIEnv* const env_;
  const LocalRef<jthrowable> pending_;
};

}  // namespace zentrel::jni
