#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/zentreljni/Exceptions.h"
#include "platform/zentreljni/HybridData.h"
#include "platform/zentreljni/ManagedData.h"

namespace zentrel::vistabase::ardelivery {

/// How a native type crosses JNI. A specialization has
///   Jni                   the JNI type
///   fromJni(value, name)  the native value of the argument of that name, or
///   toJni(value)          the JNI value of a result: a number or a LocalRef
/// A null argument raises java.lang.NullPointerException with the argument's name.
template <class T>
struct Convert;

/// Numbers pass as they are.
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

template <>
struct Convert<std::vector<std::uint8_t>> {
  using Jni = jbyteArray;
  static std::vector<std::uint8_t> fromJni(Jni value, const char* name) {
    jni::requireNonNull(value, name);
    return jni::JByteArray::toVector(value);
  }
};

/// A result that is a managed object already.
template <class T>
struct Convert<jni::LocalRef<T>> {
  using Jni = T;
  static jni::LocalRef<T> toJni(jni::LocalRef<T> value) noexcept { return value; }
};

/// A new peer goes out inside a new HybridData.
template <class Peer>
struct Convert<std::unique_ptr<Peer>> {
  using Jni = jobject;
  static jni::LocalRef<jobject> toJni(std::unique_ptr<Peer> peer) {
    return jni::HybridData::own(std::move(peer));
  }
};

/// A managed hybrid object comes in as its peer.
template <class Peer>
struct Convert<jni::Pinned<Peer>> {
  using Jni = jobject;
  static jni::Pinned<Peer> fromJni(Jni value, const char* name) {
    jni::requireNonNull(value, name);
    return jni::peerOf<Peer>(value);
  }
};

}  // namespace zentrel::vistabase::ardelivery
