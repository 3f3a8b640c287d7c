#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

/// Where the files of one complete version of face tracking lie.
struct FacetrackerModelPaths {
  std::string faceAlignPath;    ///< face_tracker_model.bin
  std::string faceDetectPath;   ///< face_detector_model.bin
  std::string faceContourPath;  ///< features_model.bin
  std::string meshPath;         ///< pdm_multires.bin
};

}  // namespace zentrel::vistabase::ardelivery
