#pragma once

#include <memory>

#include "delivery/ModelCache/FacetrackerModelPaths.h"
#include "delivery/ModelCache/FacetrackerModelType.h"
#include "delivery/ModelCache/ModelTable.h"
#include "delivery/ModelCache/TypedCapabilityModelCache.h"

namespace zentrel::vistabase::ardelivery {

/// The models of face tracking.
class FacetrackerModelCache final : public TypedCapabilityModelCache<FacetrackerModelPaths> {
 public:
  /// The files that make up a complete version.
  static constexpr ModelRow<FacetrackerModelPaths> kModels[] = {
      {int(FacetrackerModelType::FaceTracker), "face_tracker_model.bin",
       &FacetrackerModelPaths::faceAlignPath},
      {int(FacetrackerModelType::FaceDetector), "face_detector_model.bin",
       &FacetrackerModelPaths::faceDetectPath},
      {int(FacetrackerModelType::Features), "features_model.bin",
       &FacetrackerModelPaths::faceContourPath},
      {int(FacetrackerModelType::PdmMultires), "pdm_multires.bin",
       &FacetrackerModelPaths::meshPath},
  };

  /// Over the file cache that holds the files. Touches nothing.
  explicit FacetrackerModelCache(std::shared_ptr<IFileCache> fileCache);

  bool getModelsForVersion(int version, std::shared_ptr<FacetrackerModelPaths>& out) override;

 protected:
  std::shared_ptr<FacetrackerModelPaths> modelsFromEntries(const ModelEntries& entries) override;
};

}  // namespace zentrel::vistabase::ardelivery
