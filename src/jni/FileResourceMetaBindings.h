#pragma once

#include "delivery/FileCache/FileCacheEntryMeta.h"
#include "platform/zentreljni/LocalRef.h"

namespace zentrel::vistabase::ardelivery {

/// A new managed ARDFileResourceMeta whose peer holds a copy of `meta`.
jni::LocalRef<jobject> newFileResourceMeta(const FileCacheEntryMeta& meta);

/// Registers the native of the managed ARDFileResourceMeta.
void registerFileResourceMetaNatives();

}  // namespace zentrel::vistabase::ardelivery
