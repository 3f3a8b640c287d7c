#pragma once

#include <jni.h>

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "jni/Convert.h"
#include "platform/zentreljni/Environment.h"
#include "platform/zentreljni/Exceptions.h"

/// Makes native methods from plain C++ functions. A table row names the managed method and the C++
/// function; templates convert arguments and result, find the peer, and catch all exceptions:
///
///   jni::registerNatives("com/example/Counter", {
///       {"initHybrid", "(J)Lcom/zentrel/jni/HybridData;", native<&makeCounter, kStart>},
///       {"add", "(J)J", native<&Counter::add, kAmount>},
///   });
///
/// The function is followed by its arguments' names, as `constexpr char[]`.
namespace zentrel::vistabase::ardelivery {

/// Returns what a native method holds during a call on a peer: nothing, unless the peer's class has
/// an overload.
inline std::nullptr_t enter(const jni::HybridBase& /*peer*/) noexcept {
  return nullptr;
}

namespace detail {

template <class T>
using ConvertOf = Convert<std::decay_t<T>>;

/// Called in a catch-all handler: raises the managed exception for the exception caught.
using Translate = void (*)() noexcept;

/// Runs the body of a native method. No exception escapes.
template <class Result, Translate translate, class Body>
Result runNative(JNIEnv* env, const Body& body) noexcept {
  const jni::JniEnvCacher cacher(env);
  try {
    return body();
  } catch (...) {
    translate();
    return Result();
  }
}

template <class Result>
struct JniResult {
  using Type = typename ConvertOf<Result>::Jni;

  template <class Call>
  static Type of(const Call& call) {
    auto result = ConvertOf<Result>::toJni(call());
    if constexpr (std::is_arithmetic_v<decltype(result)>) {
      return result;
    } else {
      return static_cast<Type>(result.release());
    }
  }
};

template <>
struct JniResult<void> {
  using Type = void;

  template <class Call>
  static void of(const Call& call) {
    call();
  }
};

/// Converts the arguments in order, so that the first bad one is reported.
template <class... Arguments>
auto convertArguments(std::pair<typename ConvertOf<Arguments>::Jni, const char*>... arguments) {
  return std::tuple<decltype(ConvertOf<Arguments>::fromJni(arguments.first, nullptr))...>{
      ConvertOf<Arguments>::fromJni(arguments.first, arguments.second)...};
}

template <Translate translate, auto Function, class Signature, const char*... Names>
struct Native;

template <Translate translate, auto Function, class Result, class... Arguments,
          const char*... Names>
struct Native<translate, Function, Result (*)(Arguments...), Names...> {
  static_assert(sizeof...(Arguments) == sizeof...(Names), "one name per argument");
  using JniType = typename JniResult<Result>::Type;

  static JniType call(JNIEnv* env, jclass, typename ConvertOf<Arguments>::Jni... values) noexcept {
    return runNative<JniType, translate>(env, [&] {
      auto arguments = convertArguments<Arguments...>({values, Names}...);
      return JniResult<Result>::of([&] { return std::apply(Function, std::move(arguments)); });
    });
  }
};

template <Translate translate, auto Function, class Peer, class Result, class... Arguments,
          const char*... Names>
struct Native<translate, Function, Result (Peer::*)(Arguments...), Names...> {
  static_assert(sizeof...(Arguments) == sizeof...(Names), "one name per argument");
  using JniType = typename JniResult<Result>::Type;

  static JniType call(JNIEnv* env, jobject self,
                      typename ConvertOf<Arguments>::Jni... values) noexcept {
    return runNative<JniType, translate>(env, [&] {
      auto arguments = convertArguments<Arguments...>({values, Names}...);
      const jni::Pinned<Peer> peer = jni::peerOf<Peer>(self);
      return JniResult<Result>::of([&] {
        [[maybe_unused]] const auto inside = enter(*peer);
        return std::apply(Function, std::tuple_cat(std::tie(*peer), std::move(arguments)));
      });
    });
  }
};

}  // namespace detail

/// Like `native`, with a custom translation of exceptions.
template <detail::Translate translate, auto Function, const char*... Names>
void* const translatedNative = reinterpret_cast<void*>(
    &detail::Native<translate, Function, decltype(Function), Names...>::call);

/// A native method: a static one from a free function, an instance method from a member function of
/// the object's peer.
template <auto Function, const char*... Names>
void* const native =
    translatedNative<&jni::translatePendingCppExceptionToJavaException, Function, Names...>;

}  // namespace zentrel::vistabase::ardelivery
