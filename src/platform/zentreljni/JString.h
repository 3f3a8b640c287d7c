#pragma once

#include <string>

#include "platform/zentreljni/LocalRef.h"

namespace zentrel::jni {

/// Managed strings as bytes; see Utf.h for the encoding.
struct JString {
  /// `string` must not be null.
  static std::string toStdString(jstring string);
};

/// A new managed string from any bytes.
LocalRef<jstring> make_jstring(const std::string& bytes);

}  // namespace zentrel::jni
