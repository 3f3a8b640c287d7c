#pragma once

namespace zentrel::vistabase::ardelivery {

/// The files of face tracking. Stored as plain integers; the numbers overlap with those of other
/// capabilities.
enum class FacetrackerModelType : int {
  FaceTracker = 0,
  FaceDetector = 1,
  Features = 2,
  PdmMultires = 3,
};

}  // namespace zentrel::vistabase::ardelivery
