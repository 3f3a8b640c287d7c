#pragma once

#include <jni.h>

/// The table of the libraries that were merged into this one. Each keeps a load function of its
/// own, which managed code calls when it asks for that library by its former name.
namespace zentrel::jni {

using LoadFunction = jint (*)(JNIEnv* env, jclass type);

struct MergedLibrary {
  const char* name;           ///< File name of the former library.
  LoadFunction loadFunction;  ///< A static native, or null for the placeholder row.
};

}  // namespace zentrel::jni

// The bounds of the section that holds the rows, made by the linker and exported, so that tools can
// read the table of a built library. The first row is a placeholder.
// NOLINTBEGIN(bugprone-reserved-identifier): the linker chooses the names.
#pragma GCC visibility push(default)
extern "C" {
extern const zentrel::jni::MergedLibrary __start_pre_merge_jni_libraries[];
extern const zentrel::jni::MergedLibrary __stop_pre_merge_jni_libraries[];
}
#pragma GCC visibility pop
// NOLINTEND(bugprone-reserved-identifier)
