#pragma once

#include <string>

#include "delivery/ModelCache/TypedCapabilityModelCache.h"

namespace zentrel::vistabase::ardelivery {

/// The files of segmentation. Stored as plain integers; the numbers overlap with those of other
/// capabilities.
enum class SegmentationModelType : int {
  InitNet = 0,
  PredictNet = 1,
};

/// Where the files of one complete version of segmentation lie.
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

/// The models of segmentation.
class SegmentationModelCache final
    : public TabularModelCache<SegmentationModelPaths, kSegmentationModels> {
 public:
  using TabularModelCache::TabularModelCache;
};

}  // namespace zentrel::vistabase::ardelivery
