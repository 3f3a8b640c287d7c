#include "jni/mergedLibraries.h"

#include "jni/SoftErrorListener.h"
#include "platform/zentreljni/Environment.h"
#include "platform/zentreljni/initialize.h"

namespace zentrel::vistabase::ardelivery {
namespace {

/// The load function of a merged library: registers its natives through `Register`, once per
/// process and library. Returns 0, also from the second call on, or -1 when it failed; a failed
/// load is not tried again. The managed loader makes one call at a time.
template <void (*Register)()>
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
  listenToSoftErrors(vm);
  return loadResult(jni::initialize(vm, Register));
}

/// The stores came after the merge: their natives go with those of the file cache. An app that uses
/// the raw classes alone may have been shrunken to those.
void registerFileNatives() {
  registerFileCacheNatives();
  JNIEnv* const env = jni::environment();
  const jni::LocalRef<jclass> stores(env->FindClass(kStoreNativesClass));
  env->ExceptionClear();
  if (stores) {
    registerStoreNatives();
  }
}

// Retained: a linker that drops unused sections sees no use of this one.
[[gnu::section("pre_merge_jni_libraries"), gnu::used, gnu::retain]] const MergedLibrary rows[] = {
    {"jni_lib_merge-stub", nullptr},
    {"libfacetracker-model-cache-native-android.so",
     &mergedLibraryOnLoad<&registerFacetrackerModelCacheNatives>},
    {"libsegmentation-model-cache-native-android.so",
     &mergedLibraryOnLoad<&registerSegmentationModelCacheNatives>},
    {"libardcache-jni.so", &mergedLibraryOnLoad<&registerFileResourceMetaNatives>},
    {"liblmardcache-jni.so", &mergedLibraryOnLoad<&registerFileNatives>},
};

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
