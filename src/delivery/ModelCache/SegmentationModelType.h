#pragma once

namespace zentrel::vistabase::ardelivery {

/// The files of segmentation. Stored as plain integers; the numbers overlap with those of other
/// capabilities.
enum class SegmentationModelType : int {
  InitNet = 0,
  PredictNet = 1,
};

}  // namespace zentrel::vistabase::ardelivery
