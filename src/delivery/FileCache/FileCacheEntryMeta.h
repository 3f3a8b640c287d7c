#pragma once

#include <utility>

#include "delivery/FileCache/BytesVector.h"

namespace zentrel::vistabase::ardelivery {

/// What the cache tells of one entry beyond its path.
struct FileCacheEntryMeta {
  /// With these bytes.
  explicit FileCacheEntryMeta(BytesVector extraBytes) : extra(std::move(extraBytes)) {}

  BytesVector extra;  ///< The bytes that updateExtra last wrote.
};

}  // namespace zentrel::vistabase::ardelivery
