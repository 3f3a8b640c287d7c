#pragma once

#include <jni.h>

/// The libraries that were merged into this one. Each keeps a load function of its own, which
/// managed code calls when it asks for that library by its former name.
namespace zentrel::vistabase::ardelivery {

using LoadFunction = jint (*)(JNIEnv* env, jclass type);

struct MergedLibrary {
  const char* name;           ///< File name of the former library.
  LoadFunction loadFunction;  ///< A static native, or null for the placeholder row.
};

/// The name under which a merged library's load function is registered: the library's file name
/// with "_" for each byte that is not an ASCII letter, digit or "_". The caller frees the result;
/// null when there is no memory.
char* toJniName(const char* libraryName);

/// What a load function returns for the version number that `jni::initialize` gave: 0 for those
/// that have natives worth calling, else -1.
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

// What each library registers: the natives of one managed class, of that name.
void registerFacetrackerModelCacheNatives();
void registerSegmentationModelCacheNatives();
void registerFileResourceMetaNatives();  ///< Of ARDFileResourceMeta.
void registerFileCacheNatives();         ///< Of FileCacheBasicImpl.
void registerStoreNatives();             ///< Of kStoreNativesClass.

constexpr const char* kStoreNativesClass = "com/lumora/camera/effect/qv/modelcache/StoreNatives";

}  // namespace zentrel::vistabase::ardelivery

// The bounds of the section that holds the rows, made by the linker and exported, so that tools can
// read the table of a built library. The first row is a placeholder.
// NOLINTBEGIN(bugprone-reserved-identifier): the linker chooses the names.
#pragma GCC visibility push(default)
extern "C" {
extern const zentrel::vistabase::ardelivery::MergedLibrary __start_pre_merge_jni_libraries[];
extern const zentrel::vistabase::ardelivery::MergedLibrary __stop_pre_merge_jni_libraries[];
}
#pragma GCC visibility pop
// NOLINTEND(bugprone-reserved-identifier)
