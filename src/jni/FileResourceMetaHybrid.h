#pragma once

#include <utility>

#include "delivery/FileCache/IFileCache.h"
#include "platform/zentreljni/HybridData.h"
#include "platform/zentreljni/ManagedData.h"

namespace zentrel::vistabase::ardelivery {

/// The native peer of a managed ARDFileResourceMeta.
class FileResourceMetaHybrid final : public jni::HybridBase {
 public:
  explicit FileResourceMetaHybrid(FileCacheEntryMeta meta) noexcept : meta_(std::move(meta)) {}

  /// The extra bytes, in a buffer that has them to itself: callers keep it longer than the meta.
  jni::LocalRef<jobject> getExtra() {
    return jni::JByteBuffer::wrapBytes(meta_.extra.data(), meta_.extra.size());
  }

 private:
  const FileCacheEntryMeta meta_;
};

/// A new managed ARDFileResourceMeta whose peer holds a copy of `meta`.
jni::LocalRef<jobject> newFileResourceMeta(const FileCacheEntryMeta& meta);

}  // namespace zentrel::vistabase::ardelivery
