#pragma once

#include <string>

#include "delivery/ModelCache/TypedCapabilityModelCache.h"

namespace zentrel::vistabase::ardelivery {

/// The model types of face tracking. Stored as plain integers, which overlap with those of other
/// capabilities.
enum class FacetrackerModelType : int {
  FaceTracker = 0,
  FaceDetector = 1,
  Features = 2,
  PdmMultires = 3,
};

/// The paths of the files of a complete version of face tracking.
struct FacetrackerModelPaths {
  std::string faceAlignPath;    ///< face_tracker_model.bin
  std::string faceDetectPath;   ///< face_detector_model.bin
  std::string faceContourPath;  ///< features_model.bin
  std::string meshPath;         ///< pdm_multires.bin
};

/// The files that make up a complete version of face tracking.
inline constexpr ModelRow<FacetrackerModelPaths> kFacetrackerModels[] = {
    {int(FacetrackerModelType::FaceTracker), "face_tracker_model.bin",
     &FacetrackerModelPaths::faceAlignPath},
    {int(FacetrackerModelType::FaceDetector), "face_detector_model.bin",
     &FacetrackerModelPaths::faceDetectPath},
    {int(FacetrackerModelType::Features), "features_model.bin",
     &FacetrackerModelPaths::faceContourPath},
    {int(FacetrackerModelType::PdmMultires), "pdm_multires.bin", &FacetrackerModelPaths::meshPath},
};

/// The model cache for face tracking.
class FacetrackerModelCache final
    : public TabularModelCache<FacetrackerModelPaths, kFacetrackerModels> {
 public:
  using TabularModelCache::TabularModelCache;
};

}  // namespace zentrel::vistabase::ardelivery
