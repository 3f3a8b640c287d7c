#pragma once

#include <jni.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zentrel::jni {

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

}  // namespace zentrel::jni
