#include "jni/FileCacheBindings.h"

#include <memory>
#include <stdexcept>
#include <string>

#include "delivery/FileCache/createFileCache.h"
#include "jni/FileCacheConversions.h"
#include "jni/FileCacheHybrid.h"
#include "platform/zentreljni/NativeMethods.h"

namespace zentrel::vistabase::ardelivery {
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
  using jni::native;
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
