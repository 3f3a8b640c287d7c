#pragma once

#include <memory>

#include "delivery/ModelCache/ModelTable.h"
#include "delivery/ModelCache/SegmentationModelPaths.h"
#include "delivery/ModelCache/SegmentationModelType.h"
#include "delivery/ModelCache/TypedCapabilityModelCache.h"

namespace zentrel::vistabase::ardelivery {

/// The models of segmentation.
class SegmentationModelCache final : public TypedCapabilityModelCache<SegmentationModelPaths> {
 public:
  /// The files that make up a complete version.
  static constexpr ModelRow<SegmentationModelPaths> kModels[] = {
      {int(SegmentationModelType::InitNet), "seg_init_net.pb",
       &SegmentationModelPaths::initNetPath},
      {int(SegmentationModelType::PredictNet), "seg_predict_net.pb",
       &SegmentationModelPaths::predictNetPath},
  };

  /// Over the file cache that holds the files. Touches nothing.
  explicit SegmentationModelCache(std::shared_ptr<IFileCache> fileCache);

  bool getModelsForVersion(int version, std::shared_ptr<SegmentationModelPaths>& out) override;

 protected:
  std::shared_ptr<SegmentationModelPaths> modelsFromEntries(const ModelEntries& entries) override;
};

}  // namespace zentrel::vistabase::ardelivery
