#pragma once

#include <cstdint>

#include "delivery/FileCache/ICacheEvictor.h"

namespace zentrel::vistabase::ardelivery {

/// Least recently used first.
class CacheEvictor final : public ICacheEvictor {
 public:
  /// `maxSize` is the budget in bytes.
  explicit CacheEvictor(std::int64_t maxSize) noexcept : maxSize_(maxSize) {}

  std::vector<std::string> selectKeysToEvict(const ICacheMetadata& metadata) override;

 private:
  const std::int64_t maxSize_;
};

}  // namespace zentrel::vistabase::ardelivery
