#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/zentreljni/Exceptions.h"
#include "platform/zentreljni/HybridData.h"
#include "platform/zentreljni/Lookup.h"
#include "platform/zentreljni/ManagedData.h"

namespace zentrel::vistabase::ardelivery {

/// Converts a native type to or from JNI. A specialization has
///   Jni                   the JNI type
///   fromJni(value, name)  converts the argument of that name, or
///   toJni(value)          converts a result, to a number or a LocalRef
/// A null argument raises java.lang.NullPointerException with the argument's name.
template <class T>
struct Convert;

/// Numbers are cast.
template <class T, class JniType>
struct ConvertNumber {
  using Jni = JniType;
  static T fromJni(Jni value, const char* /*name*/) noexcept { return static_cast<T>(value); }
  static Jni toJni(T value) noexcept { return static_cast<Jni>(value); }
};

template <>
struct Convert<std::int32_t> : ConvertNumber<std::int32_t, jint> {};
template <>
struct Convert<std::int64_t> : ConvertNumber<std::int64_t, jlong> {};
template <>
struct Convert<bool> : ConvertNumber<bool, jboolean> {};

template <>
struct Convert<std::string> {
  using Jni = jstring;
  static std::string fromJni(Jni value, const char* name) {
    jni::requireNonNull(value, name);
    return jni::JString::toStdString(value);
  }
  static jni::LocalRef<jstring> toJni(const std::string& value) { return jni::make_jstring(value); }
};

/// An array of strings, none of which may be null.
template <>
struct Convert<std::vector<std::string>> {
  using Jni = jobjectArray;
  static std::vector<std::string> fromJni(Jni value, const char* name) {
    jni::requireNonNull(value, name);
    JNIEnv* const env = jni::environment();
    std::vector<std::string> strings;
    const jsize length = env->GetArrayLength(value);
    for (jsize i = 0; i < length; ++i) {
      const auto each = jni::checkedLocal(env->GetObjectArrayElement(value, i));
      strings.push_back(Convert<std::string>::fromJni(static_cast<jstring>(each.get()), name));
    }
    return strings;
  }
  static jni::LocalRef<jobjectArray> toJni(const std::vector<std::string>& values) {
    static const jclass type = jni::findClassStatic("java/lang/String");
    JNIEnv* const env = jni::environment();
    auto array =
        jni::checkedLocal(env->NewObjectArray(static_cast<jsize>(values.size()), type, nullptr));
    jsize index = 0;
    for (const std::string& value : values) {
      env->SetObjectArrayElement(array.get(), index++, jni::make_jstring(value).get());
      jni::throwIfPending();
    }
    return array;
  }
};

/// An array of numbers. `New`, `Get` and `Set` are the JNI functions for it.
template <class T, class Array, class Element, auto New, auto Get, auto Set>
struct ConvertNumbers {
  static_assert(sizeof(T) == sizeof(Element), "elements are copied as they are");
  using Jni = Array;
  static std::vector<T> fromJni(Jni value, const char* name) {
    jni::requireNonNull(value, name);
    JNIEnv* const env = jni::environment();
    std::vector<T> numbers(static_cast<std::size_t>(env->GetArrayLength(value)));
    (env->*Get)(value, 0, static_cast<jsize>(numbers.size()),
                reinterpret_cast<Element*>(numbers.data()));
    jni::throwIfPending();
    return numbers;
  }
  static jni::LocalRef<Array> toJni(const std::vector<T>& numbers) {
    JNIEnv* const env = jni::environment();
    const auto length = static_cast<jsize>(numbers.size());
    auto array = jni::checkedLocal((env->*New)(length));
    (env->*Set)(array.get(), 0, length, reinterpret_cast<const Element*>(numbers.data()));
    jni::throwIfPending();
    return array;
  }
};

template <>
struct Convert<std::vector<std::int32_t>>
    : ConvertNumbers<std::int32_t, jintArray, jint, &JNIEnv::NewIntArray,
                     &JNIEnv::GetIntArrayRegion, &JNIEnv::SetIntArrayRegion> {};
template <>
struct Convert<std::vector<std::int64_t>>
    : ConvertNumbers<std::int64_t, jlongArray, jlong, &JNIEnv::NewLongArray,
                     &JNIEnv::GetLongArrayRegion, &JNIEnv::SetLongArrayRegion> {};

template <>
struct Convert<std::vector<std::uint8_t>>
    : ConvertNumbers<std::uint8_t, jbyteArray, jbyte, &JNIEnv::NewByteArray,
                     &JNIEnv::GetByteArrayRegion, &JNIEnv::SetByteArrayRegion> {
  static std::vector<std::uint8_t> fromJni(Jni value, const char* name) {
    jni::requireNonNull(value, name);
    return jni::JByteArray::toVector(value);
  }
};

/// An empty optional becomes null.
template <class T>
struct Convert<std::optional<T>> {
  using Jni = typename Convert<T>::Jni;
  static jni::LocalRef<Jni> toJni(const std::optional<T>& value) {
    return value ? Convert<T>::toJni(*value) : jni::LocalRef<Jni>();
  }
};

/// A result that already is a managed object.
template <class T>
struct Convert<jni::LocalRef<T>> {
  using Jni = T;
  static jni::LocalRef<T> toJni(jni::LocalRef<T> value) noexcept { return value; }
};

/// A new peer is returned in a new HybridData.
template <class Peer>
struct Convert<std::unique_ptr<Peer>> {
  using Jni = jobject;
  static jni::LocalRef<jobject> toJni(std::unique_ptr<Peer> peer) {
    return jni::HybridData::own(std::move(peer));
  }
};

/// A managed hybrid object is converted to its peer.
template <class Peer>
struct Convert<jni::Pinned<Peer>> {
  using Jni = jobject;
  static jni::Pinned<Peer> fromJni(Jni value, const char* name) {
    jni::requireNonNull(value, name);
    return jni::peerOf<Peer>(value);
  }
};

}  // namespace zentrel::vistabase::ardelivery
