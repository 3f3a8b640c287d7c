#include "delivery/ModelCache/FacetrackerModelCache.h"
#include "jni/ModelCacheHybrid.h"
#include "jni/NativeMethods.h"
#include "jni/mergedLibraries.h"
#include "platform/zentreljni/Lookup.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Paths = FacetrackerModelPaths;
using Peer = ModelCacheHybrid<FacetrackerModelCache, Paths>;

constexpr ErrorTexts kAlignErrors{
    "Failed to get face align path: ",
    "Failed to get face align path: invalid exception type",
};
constexpr ErrorTexts kDetectErrors{
    "Failed to get face detect path: ",
    "Failed to get face detect path: invalid exception type",
};
// The first text names the align path because report collectors match on it.
constexpr ErrorTexts kContourErrors{
    "Failed to get face align path: ",
    "Failed to get face contour path: invalid exception type",
};
constexpr ErrorTexts kMeshErrors{
    "Failed to get mesh path: ",
    "Failed to get mesh path: invalid exception type",
};
constexpr ErrorTexts kAddErrors{
    "Failed to add facetracker models: ",
    "Failed to add facetracker models: invalid exception type",
};
constexpr ErrorTexts kTrimErrors{
    "Failed to trim cache: ",
    "Failed to trim cache: invalid exception type",
};

}  // namespace

void registerFacetrackerModelCacheNatives() {
  using namespace modelcache;
  jni::registerNatives(
      "com/zentrel/vistabase/assets/modelcache/facetracker/FacetrackerModelCache",
      {
          {"initHybrid", kInitHybrid, native<&Peer::make, kFileCache>},
          {"getFaceAlignPath", kGetPath,
           native<&Peer::getPath<&Paths::faceAlignPath, kAlignErrors>, kVersion>},
          {"getFaceDetectPath", kGetPath,
           native<&Peer::getPath<&Paths::faceDetectPath, kDetectErrors>, kVersion>},
          {"getFaceContourPath", kGetPath,
           native<&Peer::getPath<&Paths::faceContourPath, kContourErrors>, kVersion>},
          {"getMeshPath", kGetPath,
           native<&Peer::getPath<&Paths::meshPath, kMeshErrors>, kVersion>},
          {"addModelForVersionIfInCache", kAddModel,
           native<&Peer::addModelForVersionIfInCache<kAddErrors>, kVersion, kCacheKey, kTypeName>},
          {"trimExceptVersion", kTrim, native<&Peer::trimExceptVersion<kTrimErrors>, kVersion>},
      });
}

}  // namespace zentrel::vistabase::ardelivery
