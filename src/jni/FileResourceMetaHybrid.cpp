#include "jni/FileResourceMetaHybrid.h"

#include <utility>

#include "platform/zentreljni/JByteBuffer.h"

namespace zentrel::vistabase::ardelivery {

FileResourceMetaHybrid::FileResourceMetaHybrid(FileCacheEntryMeta meta) noexcept
    : meta_(std::move(meta)) {}

jni::LocalRef<jobject> FileResourceMetaHybrid::getExtra() {
  return jni::JByteBuffer::wrapBytes(meta_.extra.data(), meta_.extra.size());
}

}  // namespace zentrel::vistabase::ardelivery
