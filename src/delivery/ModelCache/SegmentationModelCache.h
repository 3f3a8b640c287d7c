#pragma once

#include <memory>

#include "delivery/ModelCache/SegmentationModelPaths.h"
#include "delivery/ModelCache/TypedCapabilityModelCache.h"

namespace zentrel::vistabase::ardelivery {

/// The models of segmentation.
class SegmentationModelCache final : public TypedCapabilityModelCache<SegmentationModelPaths> {
 public:
  explicit SegmentationModelCache(std::shared_ptr<IFileCache> fileCache);

  bool getModelsForVersion(int version, std::shared_ptr<SegmentationModelPaths>& out) override;

 protected:
  std::shared_ptr<SegmentationModelPaths> modelsFromEntries(const ModelEntries& entries) override;
};

}  // namespace zentrel::vistabase::ardelivery
