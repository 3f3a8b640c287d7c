// The native side of Border.java: the same calls without the border, in the same process.

#include <jni.h>

#include <chrono>
#include <string>

#include "delivery/FileCache/createFileCache.h"
#include "platform/zentreljni/Environment.h"
#include "platform/zentreljni/ManagedData.h"

using namespace zentrel;

/// Nanoseconds for `calls` look-ups of a key by the native cache.
extern "C" JNIEXPORT jlong JNICALL Java_Border_nativeLookUps(JNIEnv* env, jclass, jstring root,
                                                             jstring key, jint calls) {
  const jni::JniEnvCacher cacher(env);
  const auto cache = vistabase::ardelivery::createFileCache(jni::JString::toStdString(root), 1);
  const std::string nativeKey = jni::JString::toStdString(key);
  const auto start = std::chrono::steady_clock::now();
  for (jint i = 0; i < calls; ++i) {
    cache->getCacheEntryWithoutPromotion(nativeKey);
  }
  const std::chrono::nanoseconds time = std::chrono::steady_clock::now() - start;
  return time.count();
}
