#include "delivery/ModelCache/FacetrackerModelCache.h"

#include <utility>

#include "delivery/ModelCache/FacetrackerModelType.h"
#include "delivery/ModelCache/ModelTable.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Type = FacetrackerModelType;
using Paths = FacetrackerModelPaths;

constexpr ModelRow<Paths> kModels[] = {
    {int(Type::FaceTracker), "face_tracker_model.bin", &Paths::faceAlignPath},
    {int(Type::FaceDetector), "face_detector_model.bin", &Paths::faceDetectPath},
    {int(Type::Features), "features_model.bin", &Paths::faceContourPath},
    {int(Type::PdmMultires), "pdm_multires.bin", &Paths::meshPath},
};

}  // namespace

FacetrackerModelCache::FacetrackerModelCache(std::shared_ptr<IFileCache> fileCache)
    : TypedCapabilityModelCache(std::move(fileCache), typeNames(kModels)) {}

bool FacetrackerModelCache::getModelsForVersion(int version, std::shared_ptr<Paths>& out) {
  return assignIfPresent(getModelPaths(version), out);
}

std::shared_ptr<Paths> FacetrackerModelCache::modelsFromEntries(const ModelEntries& entries) {
  return pathsFromEntries(kModels, entries);
}

}  // namespace zentrel::vistabase::ardelivery
