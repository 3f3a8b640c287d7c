#pragma once

#include <jni.h>

/// The libraries that were merged into this one. Each still has its own load function, which
/// managed code calls when it loads that library by its former name.
namespace zentrel::vistabase::ardelivery {

using LoadFunction = jint (*)(JNIEnv* env, jclass type);

struct MergedLibrary {
  const char* name;           ///< The file name of the former library.
  LoadFunction loadFunction;  ///< A static native method; null in the placeholder row.
};

/// Returns the name under which a merged library's load function is registered: the library's file
/// name with "_" for each byte other than an ASCII letter, digit or "_". The caller frees it. Null
/// if out of memory.
char* toJniName(const char* libraryName);

/// The result of a load function for what `jni::initialize` returned: 0 for JNI versions 1.2, 1.4
/// and 1.6, else -1.
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

// What each library registers: the native methods of one managed class.
void registerFacetrackerModelCacheNatives();
void registerSegmentationModelCacheNatives();
void registerFileResourceMetaNatives();  ///< Of ARDFileResourceMeta.
void registerFileCacheNatives();         ///< Of FileCacheBasicImpl.
void registerStoreNatives();             ///< Of kStoreNativesClass.

constexpr const char* kStoreNativesClass = "com/lumora/camera/effect/qv/modelcache/StoreNatives";

}  // namespace zentrel::vistabase::ardelivery

// The bounds of the section that holds the rows, defined by the linker and exported so that tools
// can read the table from a built library. The first row is a placeholder.
// NOLINTBEGIN(bugprone-reserved-identifier): the linker chooses the names.
#pragma GCC visibility push(default)
extern "C" {
extern const zentrel::vistabase::ardelivery::MergedLibrary __start_pre_merge_jni_libraries[];
extern const zentrel::vistabase::ardelivery::MergedLibrary __stop_pre_merge_jni_libraries[];
}
#pragma GCC visibility pop
// NOLINTEND(bugprone-reserved-identifier)
