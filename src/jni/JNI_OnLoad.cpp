#include <jni.h>

#include <cstdlib>

#include "jni/mergedLibraries.h"
#include "jni/toJniName.h"

using zentrel::jni::MergedLibrary;

/// Registers the load function of each merged library on the managed mapping class, and nothing
/// else. Reports failure by its result alone.
extern "C" JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM* vm, void* /*reserved*/) {
  void* environment = nullptr;
  if (vm->GetEnv(&environment, JNI_VERSION_1_2) != JNI_OK) {
    return JNI_ERR;
  }
  auto* const env = static_cast<JNIEnv*>(environment);
  const jclass mapping = env->FindClass("com/zentrel/nexboot/MergedSoMapping$Invoke_JNI_OnLoad");
  if (mapping == nullptr) {
    return JNI_ERR;
  }
  const MergedLibrary* const begin = __start_pre_merge_jni_libraries;
  const MergedLibrary* const end = __stop_pre_merge_jni_libraries;
  auto* const methods = static_cast<JNINativeMethod*>(
      std::calloc(static_cast<std::size_t>(end - begin), sizeof(JNINativeMethod)));
  if (methods == nullptr) {
    std::abort();
  }
  jint count = 0;
  for (const MergedLibrary* row = begin; row != end; ++row) {
    const bool isPlaceholder = row == begin;
    if (isPlaceholder) {
      continue;
    }
    char* const name = zentrel::jni::toJniName(row->name);
    if (name == nullptr) {
      std::abort();
    }
    methods[count++] = {name, const_cast<char*>("()I"), reinterpret_cast<void*>(row->loadFunction)};
  }
  const jint result = env->RegisterNatives(mapping, methods, count);
  for (jint i = 0; i < count; ++i) {
    std::free(const_cast<char*>(methods[i].name));
  }
  std::free(methods);
  return result < 0 ? JNI_ERR : JNI_VERSION_1_6;
}

extern "C" JNIEXPORT jint JNICALL JNI_OnLoad_Weak(JavaVM* vm, void* reserved)
    __attribute__((alias("JNI_OnLoad")));
