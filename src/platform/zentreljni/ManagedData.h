#pragma once

#include <jni.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/zentreljni/Environment.h"

/// Conversion between managed strings, byte arrays and byte buffers and native bytes.
namespace zentrel::jni {

/// Managed strings as bytes; see support/util/Utf.h for the encoding.
struct JString {
  /// `string` must not be null.
  static std::string toStdString(jstring string);
};

/// Creates a managed string from arbitrary bytes.
LocalRef<jstring> make_jstring(const std::string& bytes);

/// Reads a managed byte array. Pins the elements for its lifetime and never writes them back.
/// `array` must not be null.
class JByteArray {
 public:
  explicit JByteArray(jbyteArray array);
  JByteArray(const JByteArray&) = delete;
  JByteArray& operator=(const JByteArray&) = delete;
  ~JByteArray();

  const std::uint8_t* getElements() const noexcept;
  std::size_t length() const noexcept { return length_; }

  /// Returns a copy of an array's bytes.
  static std::vector<std::uint8_t> toVector(jbyteArray array);

 private:
  jbyteArray array_;
  std::size_t length_;
  jbyte* elements_;
};

/// Direct byte buffers.
struct JByteBuffer {
  /// Creates a direct java.nio.ByteBuffer with a copy of these bytes, position 0 and limit
  /// `length`. The JVM owns the copy and keeps it while the buffer or a view of it is reachable, so
  /// nothing native has to outlive it.
  static LocalRef<jobject> wrapBytes(const void* data, std::size_t length);
};

}  // namespace zentrel::jni
