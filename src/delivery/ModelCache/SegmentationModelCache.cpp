#include "delivery/ModelCache/SegmentationModelCache.h"

#include <utility>

#include "delivery/ModelCache/ModelTable.h"
#include "delivery/ModelCache/SegmentationModelType.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Type = SegmentationModelType;
using Paths = SegmentationModelPaths;

constexpr ModelRow<Paths> kModels[] = {
    {int(Type::InitNet), "seg_init_net.pb", &Paths::initNetPath},
    {int(Type::PredictNet), "seg_predict_net.pb", &Paths::predictNetPath},
};

}  // namespace

SegmentationModelCache::SegmentationModelCache(std::shared_ptr<IFileCache> fileCache)
    : TypedCapabilityModelCache(std::move(fileCache), typeNames(kModels)) {}

bool SegmentationModelCache::getModelsForVersion(int version, std::shared_ptr<Paths>& out) {
  return assignIfPresent(getModelPaths(version), out);
}

std::shared_ptr<Paths> SegmentationModelCache::modelsFromEntries(const ModelEntries& entries) {
  return pathsFromEntries(kModels, entries);
}

}  // namespace zentrel::vistabase::ardelivery
