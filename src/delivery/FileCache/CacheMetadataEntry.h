#pragma once

#include <cstdint>

namespace zentrel::vistabase::ardelivery {

/// The record of one entry.
struct CacheMetadataEntry {
  std::int64_t size = 0;        ///< Bytes.
  std::int64_t lastAccess = 0;  ///< Milliseconds since the Unix epoch, by the system clock.
  bool locked = false;          ///< In memory only; a lock does not outlive a reload.
};

}  // namespace zentrel::vistabase::ardelivery
