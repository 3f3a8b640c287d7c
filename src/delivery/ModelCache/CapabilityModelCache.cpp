#include "delivery/ModelCache/CapabilityModelCache.h"

#include <algorithm>
#include <utility>

#include "delivery/ModelCache/CacheDescriptorSerializer.h"
#include "delivery/ModelCache/CapabilityModelTypeSerializer.h"
#include "delivery/ModelCache/VersionedModelCacheImpl.h"
#include "delivery/Storage/FileIO.h"

namespace zentrel::vistabase::ardelivery {

CapabilityModelCache::CapabilityModelCache(std::shared_ptr<IFileCache> fileCache,
                                           ModelTypeNames typeNames)
    : typeSerializer_(quovix::make_shared_ref<CapabilityModelTypeSerializer>(std::move(typeNames))),
      cache_(quovix::make_unique_ref<VersionedModelCacheImpl>(
          std::make_unique<FileIO>(), std::make_unique<CacheDescriptorSerializer>(),
          std::move(fileCache), typeSerializer_.pointer())) {}

CapabilityModelCache::~CapabilityModelCache() = default;

void CapabilityModelCache::trimExceptVersion(int version) {
  const std::vector<int> versions = cache_->queryVersions();
  if (versions.size() < 2 ||
      std::find(versions.begin(), versions.end(), version) == versions.end()) {
    return;
  }
  for (const int other : versions) {
    if (other != version) {
      cache_->deleteVersion(other);
    }
  }
}

bool CapabilityModelCache::addModelForVersionIfInCache(int version, const CapabilityModel& model) {
  typeSerializer_->deserializeChecked(model.type);
  return cache_->addModelIfInCache(version, ModelRecord{model.type, model.cacheKey});
}

std::vector<int> CapabilityModelCache::queryVersions() {
  return cache_->queryVersions();
}

void CapabilityModelCache::deleteVersion(int version) {
  cache_->deleteVersion(version);
}

ModelEntries CapabilityModelCache::queryEntries(int version) {
  return cache_->queryEntries(version);
}

}  // namespace zentrel::vistabase::ardelivery
