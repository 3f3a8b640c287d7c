#pragma once

namespace zentrel::jni {

/// The name under which a merged library's load function is registered: the library's file name
/// with "_" for each byte that is not an ASCII letter, digit or "_". The caller frees the result;
/// null when there is no memory.
char* toJniName(const char* libraryName);

}  // namespace zentrel::jni
