#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "support/util/memory/null_report.h"
#include "support/util/memory/type_name.h"

/// Owning references that promise not to be null.
namespace quovix {

/// Shared ownership of an object that promises to exist: a std::shared_ptr that is never null.
///
/// The promise is checked, not enforced: each access through a reference that holds null (built
/// from null, or moved from), and each move assignment of one, is reported as a soft error, and
/// execution continues with the null pointer.
template <class T>
class shared_ref {
 public:
  /// The type of the object.
  using element_type = T;

  /// Takes over a pointer.
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  shared_ref(std::shared_ptr<U> pointer) noexcept : pointer_(std::move(pointer)) {}
  /// Takes over a unique pointer.
  template <
      class U, class D,
      class = std::enable_if_t<std::is_convertible_v<std::unique_ptr<U, D>, std::shared_ptr<T>>>>
  shared_ref(std::unique_ptr<U, D> pointer) : pointer_(std::move(pointer)) {}
  /// Converts to a base class.
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  shared_ref(shared_ref<U> other) noexcept : pointer_(std::move(other.pointer_)) {}

  shared_ref(const shared_ref&) noexcept = default;             ///< Shares the object.
  shared_ref(shared_ref&&) noexcept = default;                  ///< Leaves null in the other one.
  shared_ref& operator=(const shared_ref&) noexcept = default;  ///< Shares the object.
  /// Leaves null in the other one. Reports null.
  shared_ref& operator=(shared_ref&& other) noexcept {
    pointer_ = std::move(other.pointer_);
    invariant_();
    return *this;
  }
  ~shared_ref() = default;

  /// Returns the object. Reports null.
  T* get() const noexcept {
    invariant_();
    return pointer_.get();
  }
  T* operator->() const noexcept { return get(); }  ///< Like `get`.
  T& operator*() const noexcept { return *get(); }  ///< Like `get`.

  /// Returns the pointer inside, for interfaces that take a std::shared_ptr. Reports null.
  const std::shared_ptr<T>& pointer() const noexcept {
    invariant_();
    return pointer_;
  }

  /// Reports a null pointer.
  void invariant_() const noexcept {
    if (!pointer_) {
      const auto describe = [] {
        const std::string name = detail::TypeName<T>::get();
        return "void quovix::" + detail::templateName("shared_ref", name) +
               "::invariant_() const [T = " + name + "]";
      };
      detail::reportNull("support/util/memory/shared_ref", describe, 150);
    }
  }

 private:
  template <class U>
  friend class shared_ref;

  std::shared_ptr<T> pointer_;
};

/// Creates an object and returns a reference to it.
template <class T, class... Arguments>
shared_ref<T> make_shared_ref(Arguments&&... arguments) {
  return std::make_shared<T>(std::forward<Arguments>(arguments)...);
}

}  // namespace quovix
