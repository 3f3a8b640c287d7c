#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

/// Where the files of one complete version of segmentation lie.
struct SegmentationModelPaths {
  std::string initNetPath;     ///< seg_init_net.pb
  std::string predictNetPath;  ///< seg_predict_net.pb
};

}  // namespace zentrel::vistabase::ardelivery
