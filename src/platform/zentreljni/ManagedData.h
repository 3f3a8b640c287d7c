#pragma once

#include <jni.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/zentreljni/Environment.h"

/// Managed strings, byte arrays and byte buffers, as native bytes.
namespace zentrel::jni {

/// Managed strings as bytes; see support/util/Utf.h for the encoding.
struct JString {
  /// `string` must not be null.
  static std::string toStdString(jstring string);
};

/// A new managed string from any bytes.
LocalRef<jstring> make_jstring(const std::string& bytes);

/// Reads a managed byte array. The elements are pinned while this lives and are never written
/// back. `array` must not be null.
class JByteArray {
 public:
  explicit JByteArray(jbyteArray array);
  JByteArray(const JByteArray&) = delete;
  JByteArray& operator=(const JByteArray&) = delete;
  ~JByteArray();

  const std::uint8_t* getElements() const noexcept;
  std::size_t length() const noexcept { return length_; }

  /// A copy of an array's bytes.
  static std::vector<std::uint8_t> toVector(jbyteArray array);

 private:
  jbyteArray array_;
  std::size_t length_;
  jbyte* elements_;
};

/// Direct byte buffers.
struct JByteBuffer {
  /// A new direct java.nio.ByteBuffer with these bytes, position 0 and limit `length`. It holds
  /// them in memory of its own, which the JVM keeps for as long as the buffer or a view
  /// of it is reachable: nothing native has to outlive it.
  static LocalRef<jobject> wrapBytes(const void* data, std::size_t length);
};

}  // namespace zentrel::jni
