#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "delivery/FileCache/createFileCache.h"
#include "jni/FileCacheHybrid.h"
#include "jni/FileResourceMetaHybrid.h"
#include "jni/NativeMethods.h"
#include "jni/mergedLibraries.h"
#include "platform/zentreljni/Lookup.h"

namespace zentrel::vistabase::ardelivery {

/// A managed ARDFileCacheEntry with the entry's path, or null for null.
template <>
struct Convert<std::shared_ptr<FileCacheEntry>> {
  using Jni = jobject;
  static jni::LocalRef<jobject> toJni(const std::shared_ptr<FileCacheEntry>& entry) {
    if (!entry) {
      return {};
    }
    static const jni::JavaConstructor constructor(
        "com/zentrel/vistabase/assets/tesselcache/ARDFileCacheEntry", "(Ljava/lang/String;)V");
    return constructor(jni::make_jstring(entry->path).get());
  }
};

/// A managed array of Map.Entry, from each key to its ARDFileResourceMeta.
template <>
struct Convert<std::vector<std::pair<std::string, FileCacheEntryMeta>>> {
  using Jni = jobjectArray;
  static jni::LocalRef<jobjectArray> toJni(
      const std::vector<std::pair<std::string, FileCacheEntryMeta>>& metas) {
    static const jclass mapEntry = jni::findClassStatic("java/util/Map$Entry");
    static const jni::JavaConstructor simpleEntry("java/util/AbstractMap$SimpleEntry",
                                                  "(Ljava/lang/Object;Ljava/lang/Object;)V");
    JNIEnv* const env = jni::environment();
    auto array =
        jni::checkedLocal(env->NewObjectArray(static_cast<jsize>(metas.size()), mapEntry, nullptr));
    jsize index = 0;
    for (const auto& [key, meta] : metas) {
      // Local references are released in each iteration, so as not to overflow the reference table.
      const jni::LocalRef<jstring> name = jni::make_jstring(key);
      const jni::LocalRef<jobject> value = newFileResourceMeta(meta);
      const jni::LocalRef<jobject> entry = simpleEntry(name.get(), value.get());
      env->SetObjectArrayElement(array.get(), index++, entry.get());
      jni::throwIfPending();
    }
    return array;
  }
};

namespace {

std::unique_ptr<FileCacheHybrid> initHybrid(const std::string& rootPath,
                                            std::int64_t maxSizeBytes) {
  if (rootPath.empty()) {
    throw std::invalid_argument("rootPath must not be empty");
  }
  if (rootPath.find('\0') != std::string::npos) {
    throw std::invalid_argument("rootPath would be cut short at a zero byte");
  }
  return std::make_unique<FileCacheHybrid>(createFileCache(rootPath, maxSizeBytes));
}

constexpr char kRootPath[] = "rootPath";
constexpr char kMaxSizeBytes[] = "maxSizeBytes";
constexpr char kKey[] = "key";
constexpr char kExtra[] = "extra";

#define ENTRY_OF_KEY \
  "(Ljava/lang/String;)Lcom/zentrel/vistabase/assets/tesselcache/ARDFileCacheEntry;"

}  // namespace

void registerFileCacheNatives() {
  using Peer = FileCacheHybrid;
  jni::registerNatives(
      "com/lumora/camera/effect/qv/modelcache/FileCacheBasicImpl",
      {
          {"initHybrid", "(Ljava/lang/String;J)Lcom/zentrel/jni/HybridData;",
           native<&initHybrid, kRootPath, kMaxSizeBytes>},
          {"insertAndLock", ENTRY_OF_KEY, native<&Peer::insertAndLock, kKey>},
          {"getCacheEntry", ENTRY_OF_KEY, native<&Peer::getCacheEntry, kKey>},
          {"getCacheEntryWithoutPromotion", ENTRY_OF_KEY,
           native<&Peer::getCacheEntryWithoutPromotion, kKey>},
          {"updateExtra", "(Ljava/lang/String;[B)Z", native<&Peer::updateExtra, kKey, kExtra>},
          {"getAllMetas", "()[Ljava/util/Map$Entry;", native<&Peer::getAllMetas>},
          {"unlock", "(Ljava/lang/String;)V", native<&Peer::unlock, kKey>},
          {"remove", "(Ljava/lang/String;)Z", native<&Peer::remove, kKey>},
          {"commit", "(Ljava/lang/String;)V", native<&Peer::commit, kKey>},
          {"clear", "()V", native<&Peer::clear>},
          {"getSize", "()J", native<&Peer::getSize>},
          {"flush", "()V", native<&Peer::flush>},
      });
}

}  // namespace zentrel::vistabase::ardelivery
