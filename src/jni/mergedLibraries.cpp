#include "jni/mergedLibraries.h"

#include "jni/SoftErrorListener.h"
#include "platform/zentreljni/Environment.h"
#include "platform/zentreljni/initialize.h"

namespace zentrel::vistabase::ardelivery {
namespace {

/// The load function of a merged library: registers its native methods through `Register`, once per
/// process. Returns 0, or -1 if that fails. Later calls return 0 and do nothing, even after a
/// failure. The managed loader makes one call at a time.
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

/// The stores are newer than the merge, so their native methods are registered with the file
/// cache's. In an app that uses only the raw classes, a shrinker may have removed them.
void registerFileNatives() {
  registerFileCacheNatives();
  JNIEnv* const env = jni::environment();
  const jni::LocalRef<jclass> stores(env->FindClass(kStoreNativesClass));
  env->ExceptionClear();
  if (stores) {
    registerStoreNatives();
  }
}

// Retained, because a linker that drops unused sections sees no reference to this one.
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
