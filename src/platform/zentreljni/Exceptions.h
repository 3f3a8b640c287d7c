#pragma once

#include <exception>
#include <string>

#include "platform/zentreljni/LocalRef.h"

namespace zentrel::jni {

/// Stands, in native code, for the managed exception that is pending on the current thread. Let it
/// pass to the native's boundary, where the managed exception stays as it is.
class PendingJavaException : public std::exception {
 public:
  const char* what() const noexcept override;
};

/// Throws PendingJavaException when a managed exception is pending. To be called after each JNI
/// function that may raise one.
void throwIfPending();

/// Takes over the result of a JNI function that gives null exactly when it failed.
template <class T>
LocalRef<T> checkedLocal(T reference) {
  LocalRef<T> owner(reference);
  throwIfPending();
  return owner;
}

/// Raises a managed exception (class name in slash form, any bytes as message), then throws
/// PendingJavaException for it. A class that cannot be found leaves the machine's own error.
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
