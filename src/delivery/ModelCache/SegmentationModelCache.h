#pragma once

#include <string>

#include "delivery/ModelCache/TypedCapabilityModelCache.h"

namespace zentrel::vistabase::ardelivery {

/// The model types of segmentation. Stored as plain integers, which overlap with those of other
/// capabilities.
enum class SegmentationModelType : int {
  InitNet = 0,
  PredictNet = 1,
};

/// The paths of the files of a complete version of segmentation.
struct SegmentationModelPaths {
  std::string initNetPath;     ///< seg_init_net.pb
  std::string predictNetPath;  ///< seg_predict_net.pb
};

/// The files that make up a complete version of segmentation.
inline constexpr ModelRow<SegmentationModelPaths> kSegmentationModels[] = {
    {int(SegmentationModelType::InitNet), "seg_init_net.pb", &SegmentationModelPaths::initNetPath},
    {int(SegmentationModelType::PredictNet), "seg_predict_net.pb",
     &SegmentationModelPaths::predictNetPath},
};

/// The model cache for segmentation.
class SegmentationModelCache final
    : public TabularModelCache<SegmentationModelPaths, kSegmentationModels> {
 public:
  using TabularModelCache::TabularModelCache;
};

}  // namespace zentrel::vistabase::ardelivery
