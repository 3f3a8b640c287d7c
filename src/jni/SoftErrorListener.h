#pragma once

#include <jni.h>

namespace zentrel::vistabase::ardelivery {

/// Starts forwarding soft errors from threads attached to the JVM to the managed SoftErrors, after
/// the native sink. Whatever the managed side does with them, the thread's pending exception and
/// the native call's result are unaffected.
void listenToSoftErrors(JavaVM* vm) noexcept;

}  // namespace zentrel::vistabase::ardelivery
