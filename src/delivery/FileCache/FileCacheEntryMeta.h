#pragma once

#include "delivery/FileCache/BytesVector.h"

namespace zentrel::vistabase::ardelivery {

/// What the cache tells of one entry beyond its path.
struct FileCacheEntryMeta {
  explicit FileCacheEntryMeta(const BytesVector& extraBytes) : extra(extraBytes) {}

  BytesVector extra;  ///< The bytes that updateExtra last wrote.
};

}  // namespace zentrel::vistabase::ardelivery
