#pragma once

#include <jni.h>

namespace zentrel::vistabase::ardelivery {

/// Passes soft errors on to the managed SoftErrors, from now on: those of threads that are
/// attached to the JVM, after the native sink. Whatever the managed side does with them, what is
/// pending on the thread, and what the native call gives, stay as they are.
void listenToSoftErrors(JavaVM* vm) noexcept;

}  // namespace zentrel::vistabase::ardelivery
