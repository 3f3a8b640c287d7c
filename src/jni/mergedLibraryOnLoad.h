#pragma once

#include <jni.h>

#include "jni/SoftErrorListener.h"
#include "platform/zentreljni/initialize.h"

namespace zentrel::jni {

/// What a load function returns for the version number that `initialize` gave: 0 for those that
/// have natives worth calling, else -1.
constexpr jint loadResult(jint version) {
  switch (version) {
    case JNI_VERSION_1_2:
    case JNI_VERSION_1_4:
    case JNI_VERSION_1_6:
      return 0;
    default:
      return -1;
  }
}

/// The load function of a merged library: registers its natives through `OnLoad`, once per process
/// and library. Returns 0, also from the second call on, or -1 when it failed; a failed load is not
/// tried again. The managed loader makes one call at a time.
template <void (*OnLoad)()>
jint mergedLibraryOnLoad(JNIEnv* env, jclass) {
  static unsigned char alreadyLoaded = 0;
  if (alreadyLoaded != 0) {
    return 0;
  }
  alreadyLoaded = 1;
  JavaVM* vm = nullptr;
  if (env->GetJavaVM(&vm) < 0) {
    return -1;
  }
  vistabase::ardelivery::listenToSoftErrors(vm);
  return loadResult(initialize(vm, OnLoad));
}

}  // namespace zentrel::jni
