#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "support/util/memory/null_report.h"
#include "support/util/memory/type_name.h"

namespace quovix {

/// Sole ownership of an object that promises to be there: a std::unique_ptr that is never null.
///
/// The promise is tested, not enforced: each access and each move assignment of a reference that
/// holds null (built from null, or moved from) is reported as a soft error, and execution goes on
/// with the null pointer.
template <class T, class D = std::default_delete<T>>
class unique_ref {
 public:
  /// What it refers to.
  using element_type = T;

  /// Takes the place of a pointer.
  template <
      class U, class E,
      class = std::enable_if_t<std::is_convertible_v<std::unique_ptr<U, E>, std::unique_ptr<T, D>>>>
  unique_ref(std::unique_ptr<U, E> pointer) noexcept : pointer_(std::move(pointer)) {}
  /// To a base of what the other refers to.
  template <
      class U, class E,
      class = std::enable_if_t<std::is_convertible_v<std::unique_ptr<U, E>, std::unique_ptr<T, D>>>>
  unique_ref(unique_ref<U, E>&& other) noexcept : pointer_(std::move(other.pointer_)) {}

  unique_ref(unique_ref&&) noexcept = default;  ///< Leaves the other one with null.
  /// Leaves the other one with null; reports null.
  unique_ref& operator=(unique_ref&& other) noexcept {
    pointer_ = std::move(other.pointer_);
    invariant_();
    return *this;
  }
  ~unique_ref() = default;

  /// The object; reports null.
  T* get() const noexcept {
    invariant_();
    return pointer_.get();
  }
  T* operator->() const noexcept { return get(); }  ///< As `get`.
  T& operator*() const noexcept { return *get(); }  ///< As `get`.

  /// Gives up the object, for interfaces that take ownership by std::unique_ptr.
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

/// A reference to a new object.
template <class T, class... Arguments>
unique_ref<T> make_unique_ref(Arguments&&... arguments) {
  return std::make_unique<T>(std::forward<Arguments>(arguments)...);
}

}  // namespace quovix
