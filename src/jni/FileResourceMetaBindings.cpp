#include <memory>

#include "jni/FileResourceMetaHybrid.h"
#include "jni/NativeMethods.h"
#include "jni/mergedLibraries.h"
#include "platform/zentreljni/Lookup.h"

namespace zentrel::vistabase::ardelivery {
namespace {

constexpr const char* kClass = "com/zentrel/vistabase/assets/tesselcache/ARDFileResourceMeta";

}  // namespace

jni::LocalRef<jobject> newFileResourceMeta(const FileCacheEntryMeta& meta) {
  static const jni::JavaConstructor constructor(kClass, "(Lcom/zentrel/jni/HybridData;)V");
  const auto hybridData = jni::HybridData::own(std::make_unique<FileResourceMetaHybrid>(meta));
  return constructor(hybridData.get());
}

void registerFileResourceMetaNatives() {
  jni::registerNatives(
      kClass, {{"getExtra", "()Ljava/nio/ByteBuffer;", native<&FileResourceMetaHybrid::getExtra>}});
}

}  // namespace zentrel::vistabase::ardelivery
