#include "delivery/ModelCache/SegmentationModelCache.h"

#include <utility>

namespace zentrel::vistabase::ardelivery {

using Paths = SegmentationModelPaths;

SegmentationModelCache::SegmentationModelCache(std::shared_ptr<IFileCache> fileCache)
    : TypedCapabilityModelCache(std::move(fileCache), typeNames(kModels)) {}

bool SegmentationModelCache::getModelsForVersion(int version, std::shared_ptr<Paths>& out) {
  return assignIfPresent(getModelPaths(version), out);
}

std::shared_ptr<Paths> SegmentationModelCache::modelsFromEntries(const ModelEntries& entries) {
  return pathsFromEntries(kModels, entries);
}

}  // namespace zentrel::vistabase::ardelivery
