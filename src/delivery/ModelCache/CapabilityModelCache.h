#pragma once

#include <memory>

#include "delivery/FileCache/IFileCache.h"
#include "delivery/ModelCache/CapabilityModel.h"
#include "delivery/ModelCache/CapabilityModelTypeSerializer.h"
#include "delivery/ModelCache/VersionedModelCacheImpl.h"
#include "support/util/memory/shared_ref.h"
#include "support/util/memory/unique_ref.h"

namespace zentrel::vistabase::ardelivery {

/// The versions of one capability's models, over a file cache that holds the files. Failures are
/// std::runtime_error; a missing file is none. One thread at a time.
class CapabilityModelCache {
 public:
  /// Deletes all versions but one, with the files that it does not share. Nothing is deleted when
  /// the version to keep is not there: better too many models than none.
  virtual void trimExceptVersion(int version);

  virtual ~CapabilityModelCache() = default;

  /// Records a cached file under the version. False when the file cache does not hold its key;
  /// throws "Unknown serialized type: NAME" when the capability has no such model.
  virtual bool addModelForVersionIfInCache(int version, const CapabilityModel& model);

  /// Whether all files of the version are recorded and cached.
  virtual bool hasModelsForVersion(int version) = 0;

 protected:
  /// `typeNames` is the capability's.
  CapabilityModelCache(std::shared_ptr<IFileCache> fileCache,
                       CapabilityModelTypeSerializer::Table typeNames);

  /// The versions.
  VersionedModelCacheImpl& cache() { return *cache_; }

 private:
  quovix::shared_ref<CapabilityModelTypeSerializer> typeSerializer_;
  quovix::unique_ref<VersionedModelCacheImpl> cache_;
};

}  // namespace zentrel::vistabase::ardelivery
