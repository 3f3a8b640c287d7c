#include "jni/FileCacheConversions.h"

#include "jni/FileResourceMetaBindings.h"
#include "platform/zentreljni/Lookup.h"

namespace zentrel::jni {

using vistabase::ardelivery::FileCacheEntry;
using vistabase::ardelivery::FileCacheEntryMeta;
using vistabase::ardelivery::newFileResourceMeta;

LocalRef<jobject> Convert<std::shared_ptr<FileCacheEntry>>::toJni(
    const std::shared_ptr<FileCacheEntry>& entry) {
  if (!entry) {
    return {};
  }
  static const JavaConstructor constructor(
      "com/zentrel/vistabase/assets/tesselcache/ARDFileCacheEntry", "(Ljava/lang/String;)V");
  return constructor(make_jstring(entry->path).get());
}

LocalRef<jobjectArray> Convert<std::vector<std::pair<std::string, FileCacheEntryMeta>>>::toJni(
    const std::vector<std::pair<std::string, FileCacheEntryMeta>>& metas) {
  static const jclass mapEntry = findClassStatic("java/util/Map$Entry");
  static const JavaConstructor simpleEntry("java/util/AbstractMap$SimpleEntry",
                                           "(Ljava/lang/Object;Ljava/lang/Object;)V");
  JNIEnv* const env = environment();
  auto array =
      checkedLocal(env->NewObjectArray(static_cast<jsize>(metas.size()), mapEntry, nullptr));
  jsize index = 0;
  for (const auto& [key, meta] : metas) {
    // The references of each round go with it: any number of entries fits the reference table.
    const LocalRef<jstring> name = make_jstring(key);
    const LocalRef<jobject> value = newFileResourceMeta(meta);
    const LocalRef<jobject> entry = simpleEntry(name.get(), value.get());
    env->SetObjectArrayElement(array.get(), index++, entry.get());
    throwIfPending();
  }
  return array;
}

}  // namespace zentrel::jni
