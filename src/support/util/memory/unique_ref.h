#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "support/util/memory/null_report.h"
#include "support/util/memory/type_name.h"

namespace quovix {

/// Sole ownership of an object that promises to exist: a std::unique_ptr that is never null.
///
/// The promise is checked, not enforced: each access through a reference that holds null (built
/// from null, or moved from), and each move assignment of one, is reported as a soft error, and
/// execution continues with the null pointer.
template <class T, class D = std::default_delete<T>>
class unique_ref {
 public:
  /// The type of the object.
  using element_type = T;

  /// Takes over a pointer.
  template <
      class U, class E,
      class = std::enable_if_t<std::is_convertible_v<std::unique_ptr<U, E>, std::unique_ptr<T, D>>>>
  unique_ref(std::unique_ptr<U, E> pointer) noexcept : pointer_(std::move(pointer)) {}
  /// Converts to a base class.
  template <
      class U, class E,
      class = std::enable_if_t<std::is_convertible_v<std::unique_ptr<U, E>, std::unique_ptr<T, D>>>>
  unique_ref(unique_ref<U, E>&& other) noexcept : pointer_(std::move(other.pointer_)) {}

  unique_ref(unique_ref&&) noexcept = default;  ///< Leaves null in the other one.
  /// Leaves null in the other one. Reports null.
  unique_ref& operator=(unique_ref&& other) noexcept {
    pointer_ = std::move(other.pointer_);
    invariant_();
    return *this;
  }
  ~unique_ref() = default;

  /// Returns the object. Reports null.
  T* get() const noexcept {
    invariant_();
    return pointer_.get();
  }
  T* operator->() const noexcept { return get(); }  ///< Like `get`.
  T& operator*() const noexcept { return *get(); }  ///< Like `get`.

  /// Releases the object, for interfaces that take a std::unique_ptr.
  std::unique_ptr<T, D> release() && noexcept { return std::move(pointer_); }

  /// Reports a null pointer.
  void invariant_() const noexcept {
    if (!pointer_) {
      const auto describe = [] {
        const std::string name = detail::TypeName<T>::get();
        const std::string deleter = detail::TypeName<D>::get();
        return "void quovix::" + detail::templateName("unique_ref", name + ", " + deleter) +
               "::invariant_() const [T = " + name + ", D = " + deleter + "]";
      };
      detail::reportNull("support/util/memory/unique_ref", describe, 126);
    }
  }

 private:
  template <class U, class E>
  friend class unique_ref;

  std::unique_ptr<T, D> pointer_;
};

/// Creates an object and returns a reference to it.
template <class T, class... Arguments>
unique_ref<T> make_unique_ref(Arguments&&... arguments) {
  return std::make_unique<T>(std::forward<Arguments>(arguments)...);
}

}  // namespace quovix
