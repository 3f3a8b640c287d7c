#pragma once

#include "delivery/FileCache/ICacheMetadataSerializer.h"

namespace zentrel::vistabase::ardelivery {

/// JSON: {"entries":[{"key":"a","size":5,"lastAccess":1700000000000}]}. Members are read by
/// name, and unknown ones ignored. Stateless.
class CacheMetadataSerializer final : public ICacheMetadataSerializer {
 public:
  std::string serialize(const ICacheMetadata& metadata) override;
  quovix::unique_ref<ICacheMetadata> deserialize(const std::string& text) override;
};

}  // namespace zentrel::vistabase::ardelivery
