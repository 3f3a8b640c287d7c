#pragma once

#include <cstddef>

#include "platform/zentreljni/LocalRef.h"

namespace zentrel::jni {

/// Direct byte buffers.
struct JByteBuffer {
  /// A new direct java.nio.ByteBuffer with these bytes, position 0 and limit `length`. It holds
  /// them in memory of its own, which the virtual machine keeps for as long as the buffer or a view
  /// of it is reachable: nothing native has to outlive it.
  static LocalRef<jobject> wrapBytes(const void* data, std::size_t length);
};

}  // namespace zentrel::jni
