#include "jni/toJniName.h"

#include <cstring>

namespace zentrel::jni {
namespace {

// Not isalnum, which depends on the locale and is undefined for bytes from 0x80 on.
bool isKept(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '_';
}

}  // namespace

char* toJniName(const char* libraryName) {
  char* const name = ::strdup(libraryName);
  if (name != nullptr) {
    for (char* byte = name; *byte != '\0'; ++byte) {
      if (!isKept(*byte)) {
        *byte = '_';
      }
    }
  }
  return name;
}

}  // namespace zentrel::jni
