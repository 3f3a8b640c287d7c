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

  /// Returns the extra bytes in a buffer with its own copy, since callers keep it longer than this.
  jni::LocalRef<jobject> getExtra() {
    return jni::JByteBuffer::wrapBytes(meta_.extra.data(), meta_.extra.size());
  }

 private:
  const FileCacheEntryMeta meta_;
};

/// Creates a managed ARDFileResourceMeta whose peer holds a copy of `meta`.
jni::LocalRef<jobject> newFileResourceMeta(const FileCacheEntryMeta& meta);

}  // namespace zentrel::vistabase::ardelivery
