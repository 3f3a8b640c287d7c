#pragma once

#include <string>

#include "delivery/ModelCache/TypedCapabilityModelCache.h"

namespace zentrel::vistabase::ardelivery {

/// The files of face tracking. Stored as plain integers; the numbers overlap with those of other
/// capabilities.
enum class FacetrackerModelType : int {
  FaceTracker = 0,
  FaceDetector = 1,
  Features = 2,
  PdmMultires = 3,
};

/// Where the files of one complete version of face tracking lie.
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

/// The models of face tracking.
class FacetrackerModelCache final
    : public TabularModelCache<FacetrackerModelPaths, kFacetrackerModels> {
 public:
  using TabularModelCache::TabularModelCache;
};

}  // namespace zentrel::vistabase::ardelivery
