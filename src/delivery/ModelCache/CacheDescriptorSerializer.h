#pragma once

#include "delivery/ModelCache/ICacheDescriptorSerializer.h"

namespace zentrel::vistabase::ardelivery {

/// JSON: {"versions":[{"version":3,"models":[{"type":"seg_init_net.pb","cacheKey":"k1"}]}]}.
/// Readers find members by name and ignore others. Stateless.
class CacheDescriptorSerializer final : public ICacheDescriptorSerializer {
 public:
  std::string serialize(const CacheDescriptor& descriptor) override;
  std::unique_ptr<CacheDescriptor> deserialize(const std::string& text) override;
};

}  // namespace zentrel::vistabase::ardelivery
