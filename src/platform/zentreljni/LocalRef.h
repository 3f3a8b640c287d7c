#pragma once

#include <jni.h>

#include <utility>

#include "platform/zentreljni/Environment.h"

namespace zentrel::jni {

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

}  // namespace zentrel::jni
