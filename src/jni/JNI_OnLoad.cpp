#include <jni.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "jni/mergedLibraries.h"

namespace zentrel::vistabase::ardelivery {
namespace {

// Not isalnum, which depends on the locale and is undefined for bytes from 0x80 on.
bool isKept(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '_';
}

/// There is no fallback if memory is exhausted during load.
template <class T>
T* orAbort(T* memory) {
  if (memory == nullptr) {
    std::abort();
  }
  return memory;
}

/// Registers the load function of each row after the placeholder as a static native method "()I".
/// Returns the result of RegisterNatives, which is negative on failure.
jint registerLoadFunctions(JNIEnv* env, jclass mapping) {
  const MergedLibrary* const placeholder = __start_pre_merge_jni_libraries;
  const MergedLibrary* const end = __stop_pre_merge_jni_libraries;
  auto* const methods = static_cast<JNINativeMethod*>(
      orAbort(std::calloc(static_cast<std::size_t>(end - placeholder), sizeof(JNINativeMethod))));
  jint count = 0;
  for (const MergedLibrary* row = placeholder + 1; row < end; ++row) {
    methods[count++] = {orAbort(toJniName(row->name)), const_cast<char*>("()I"),
                        reinterpret_cast<void*>(row->loadFunction)};
  }
  const jint result = env->RegisterNatives(mapping, methods, count);
  for (jint i = 0; i < count; ++i) {
    std::free(const_cast<char*>(methods[i].name));
  }
  std::free(methods);
  return result;
}

}  // namespace

char* toJniName(const char* libraryName) {
  char* const name = ::strdup(libraryName);
  if (name != nullptr) {
    for (char* byte = name; *byte != '\0'; ++byte) {
      if (!isKept(*byte)) {
        *byte = '_';
      }
    }
  }
  return name;
}

}  // namespace zentrel::vistabase::ardelivery

/// Registers the load function of each merged library on the managed mapping class, and does
/// nothing else. The result is the only report of a failure.
extern "C" JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM* vm, void* /*reserved*/) {
  using namespace zentrel::vistabase::ardelivery;
  void* env = nullptr;
  if (vm->GetEnv(&env, JNI_VERSION_1_2) != JNI_OK) {
    return JNI_ERR;
  }
  auto* const environment = static_cast<JNIEnv*>(env);
  const jclass mapping =
      environment->FindClass("com/zentrel/nexboot/MergedSoMapping$Invoke_JNI_OnLoad");
  if (mapping == nullptr) {
    return JNI_ERR;
  }
  return registerLoadFunctions(environment, mapping) < 0 ? JNI_ERR : JNI_VERSION_1_6;
}

extern "C" JNIEXPORT jint JNICALL JNI_OnLoad_Weak(JavaVM* vm, void* reserved)
    __attribute__((alias("JNI_OnLoad")));
