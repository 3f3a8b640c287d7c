#pragma once

#include <string>

#include "platform/zentreljni/Environment.h"

namespace zentrel::jni {

/// Raises a managed exception (class name in slash form, any bytes as message), then throws
/// PendingJavaException for it. A class that cannot be found leaves the JVM's own error.
[[noreturn]] void throwNewJavaException(const char* className, const std::string& message);

/// Throws java.lang.NullPointerException "NAME must not be null" when an argument is null.
void requireNonNull(jobject argument, const char* name);

/// To be called in a handler for any exception: raises the managed exception that corresponds to
/// the one being handled, unless one is pending already.
///   std::bad_alloc          java.lang.OutOfMemoryError
///   std::invalid_argument   java.lang.IllegalArgumentException
///   other std::exception    java.lang.RuntimeException
///   anything else           java.lang.RuntimeException "unknown native exception"
void translatePendingCppExceptionToJavaException() noexcept;

}  // namespace zentrel::jni
