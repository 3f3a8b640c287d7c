#pragma once

#include "delivery/ModelCache/ICacheDescriptorSerializer.h"

namespace zentrel::vistabase::ardelivery {

/// JSON: {"versions":[{"version":3,"models":[{"type":"seg_init_net.pb","cacheKey":"k1"}]}]}.
/// Members are read by name, and unknown ones ignored. Stateless.
class CacheDescriptorSerializer final : public ICacheDescriptorSerializer {
 public:
  std::string serialize(const CacheDescriptor& descriptor) override;
  std::unique_ptr<CacheDescriptor> deserialize(const std::string& text) override;
};

}  // namespace zentrel::vistabase::ardelivery
