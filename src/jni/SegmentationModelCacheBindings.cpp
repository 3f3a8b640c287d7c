#include "delivery/ModelCache/SegmentationModelCache.h"
#include "jni/ModelCacheHybrid.h"
#include "jni/NativeMethods.h"
#include "jni/mergedLibraries.h"
#include "platform/zentreljni/Lookup.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Paths = SegmentationModelPaths;
using Peer = ModelCacheHybrid<SegmentationModelCache, Paths>;

constexpr ErrorTexts kInitNetErrors{
    "Failed to get init net path: ",
    "Failed to get init net path: invalid exception type",
};
constexpr ErrorTexts kPredictNetErrors{
    "Failed to get predict net path: ",
    "Failed to get predict net path: invalid exception type",
};
constexpr ErrorTexts kAddErrors{
    "Failed to add segmentation models: ",
    "Failed to add segmentation models: invalid exception type",
};
constexpr ErrorTexts kTrimErrors{
    "Failed to trim segmentation models: ",
    "Failed to trim segmentation models: invalid exception type",
};

}  // namespace

void registerSegmentationModelCacheNatives() {
  using namespace modelcache;
  jni::registerNatives(
      "com/zentrel/vistabase/assets/modelcache/segmentation/SegmentationModelCache",
      {
          {"initHybrid", kInitHybrid, native<&Peer::make, kFileCache>},
          {"getInitNetPath", kGetPath,
           native<&Peer::getPath<&Paths::initNetPath, kInitNetErrors>, kVersion>},
          {"getPredictNetPath", kGetPath,
           native<&Peer::getPath<&Paths::predictNetPath, kPredictNetErrors>, kVersion>},
          {"addModelForVersionIfInCache", kAddModel,
           native<&Peer::addModelForVersionIfInCache<kAddErrors>, kVersion, kCacheKey, kTypeName>},
          {"trimExceptVersion", kTrim, native<&Peer::trimExceptVersion<kTrimErrors>, kVersion>},
      });
}

}  // namespace zentrel::vistabase::ardelivery
