#include "delivery/ModelCache/FacetrackerModelCache.h"

#include <utility>

namespace zentrel::vistabase::ardelivery {

using Paths = FacetrackerModelPaths;

FacetrackerModelCache::FacetrackerModelCache(std::shared_ptr<IFileCache> fileCache)
    : TypedCapabilityModelCache(std::move(fileCache), typeNames(kModels)) {}

bool FacetrackerModelCache::getModelsForVersion(int version, std::shared_ptr<Paths>& out) {
  return assignIfPresent(getModelPaths(version), out);
}

std::shared_ptr<Paths> FacetrackerModelCache::modelsFromEntries(const ModelEntries& entries) {
  return pathsFromEntries(kModels, entries);
}

}  // namespace zentrel::vistabase::ardelivery
