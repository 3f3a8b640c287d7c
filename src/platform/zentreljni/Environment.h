#pragma once

#include <jni.h>

#include <exception>
#include <utility>

namespace zentrel::jni {

/// Records the current thread's JNI environment until destroyed. Nests.
class JniEnvCacher {
 public:
  explicit JniEnvCacher(JNIEnv* env) noexcept;
  JniEnvCacher(const JniEnvCacher&) = delete;
  JniEnvCacher& operator=(const JniEnvCacher&) = delete;
  ~JniEnvCacher();

 private:
  JNIEnv* const outer_;
};

/// Returns the recorded environment of the current thread. Every native method that this library
/// wraps has one, and so does `initialize`; throws std::logic_error elsewhere.
JNIEnv* environment();

/// Represents, in native code, the managed exception pending on the current thread. Let it
/// propagate to the native method's boundary, which leaves the managed exception pending.
class PendingJavaException : public std::exception {
 public:
  const char* what() const noexcept override;
};

/// Throws PendingJavaException if a managed exception is pending. Call it after each JNI function
/// that may raise one.
void throwIfPending();

/// Owns a local reference, or none. Must be destroyed on the thread that created the reference.
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

  /// Releases ownership, for a native method to return the reference.
  T release() noexcept { return std::exchange(reference_, nullptr); }
  void swap(LocalRef& other) noexcept { std::swap(reference_, other.reference_); }

 private:
  T reference_ = nullptr;
};

/// Takes ownership of the result of a JNI function that returns null only on failure. Throws
/// PendingJavaException if it failed.
template <class T>
LocalRef<T> checkedLocal(T reference) {
  LocalRef<T> owner(reference);
  throwIfPending();
  return owner;
}

/// Clears a pending exception so that JNI functions may be called, and restores it when destroyed,
/// discarding any exception raised since.
class ScopedPendingClear {
 public:
  ScopedPendingClear() : env_(environment()), pending_(env_->ExceptionOccurred()) {
    env_->ExceptionClear();
  }
  ScopedPendingClear(const ScopedPendingClear&) = delete;
  ScopedPendingClear& operator=(const ScopedPendingClear&) = delete;
  ~ScopedPendingClear() {
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
