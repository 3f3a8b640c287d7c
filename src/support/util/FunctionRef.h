#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace zentrel::vistabase::ardelivery {

template <class Signature>
class FunctionRef;

/// A reference to a callable, for parameters: valid only during the call that it is passed to.
/// Unlike std::function it owns nothing, and costs no more than a function pointer.
template <class Result, class... Arguments>
class FunctionRef<Result(Arguments...)> {
 public:
  template <class Callable,
            class = std::enable_if_t<!std::is_same_v<std::decay_t<Callable>, FunctionRef>>>
  FunctionRef(const Callable& callable) noexcept
      : callable_(std::addressof(callable)), call_([](const void* object, Arguments... arguments) {
          return (*static_cast<const Callable*>(object))(std::forward<Arguments>(arguments)...);
        }) {}

  Result operator()(Arguments... arguments) const {
    return call_(callable_, std::forward<Arguments>(arguments)...);
  }

 private:
  const void* callable_;
  Result (*call_)(const void*, Arguments...);
};

}  // namespace zentrel::vistabase::ardelivery
