#pragma once

#include "delivery/FileCache/FileCacheEntryMeta.h"
#include "platform/zentreljni/HybridBase.h"
#include "platform/zentreljni/LocalRef.h"

namespace zentrel::vistabase::ardelivery {

/// The native peer of a managed ARDFileResourceMeta.
class FileResourceMetaHybrid final : public jni::HybridBase {
 public:
  explicit FileResourceMetaHybrid(FileCacheEntryMeta meta) noexcept;

  /// The extra bytes, in a buffer that has them to itself: callers keep it longer than the meta.
  jni::LocalRef<jobject> getExtra();

 private:
  const FileCacheEntryMeta meta_;
};

}  // namespace zentrel::vistabase::ardelivery
