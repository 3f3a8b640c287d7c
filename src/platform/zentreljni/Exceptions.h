#pragma once

#include <string>

#include "platform/zentreljni/Environment.h"

namespace zentrel::jni {

/// Raises a managed exception (class name in slash form, arbitrary bytes as message), then throws
/// PendingJavaException. If the class is not found, the JVM's own error is raised instead.
[[noreturn]] void throwNewJavaException(const char* className, const std::string& message);

/// Throws java.lang.NullPointerException "NAME must not be null" if the argument is null.
void requireNonNull(jobject argument, const char* name);

/// Call it in a catch-all handler: raises the managed exception that corresponds to the exception
/// being handled, unless one is already pending.
///   std::bad_alloc          java.lang.OutOfMemoryError
///   std::invalid_argument   java.lang.IllegalArgumentException
///   other std::exception    java.lang.RuntimeException
///   anything else           java.lang.RuntimeException "unknown native exception"
void translatePendingCppExceptionToJavaException() noexcept;

}  // namespace zentrel::jni
