#pragma once

#include <jni.h>

#include <functional>

namespace zentrel::jni {

/// Initializes this library on the current, attached thread and runs `onLoad`, which registers
/// native methods. Returns JNI_VERSION_1_6, or JNI_ERR if the thread has no environment or
/// something was thrown, which is then pending as a managed exception.
jint initialize(JavaVM* vm, const std::function<void()>& onLoad) noexcept;

}  // namespace zentrel::jni
