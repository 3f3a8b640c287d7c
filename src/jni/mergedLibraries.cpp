#include "jni/mergedLibraries.h"

#include "jni/FacetrackerModelCacheBindings.h"
#include "jni/FileCacheBindings.h"
#include "jni/FileResourceMetaBindings.h"
#include "jni/SegmentationModelCacheBindings.h"
#include "jni/mergedLibraryOnLoad.h"

namespace zentrel::jni {
namespace {

using namespace zentrel::vistabase::ardelivery;

// Retained: a linker that drops unused sections sees no use of this one.
[[gnu::section("pre_merge_jni_libraries"), gnu::used, gnu::retain]] const MergedLibrary rows[] = {
    {"jni_lib_merge-stub", nullptr},
    {"libfacetracker-model-cache-native-android.so",
     &mergedLibraryOnLoad<&registerFacetrackerModelCacheNatives>},
    {"libsegmentation-model-cache-native-android.so",
     &mergedLibraryOnLoad<&registerSegmentationModelCacheNatives>},
    {"libardcache-jni.so", &mergedLibraryOnLoad<&registerFileResourceMetaNatives>},
    {"liblmardcache-jni.so", &mergedLibraryOnLoad<&registerFileCacheNatives>},
};

}  // namespace
}  // namespace zentrel::jni
