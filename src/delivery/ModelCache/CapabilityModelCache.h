#pragma once

#include <memory>
#include <vector>

#include "delivery/FileCache/IFileCache.h"
#include "delivery/ModelCache/CapabilityModel.h"
#include "support/util/memory/shared_ref.h"
#include "support/util/memory/unique_ref.h"

namespace zentrel::vistabase::ardelivery {

class CapabilityModelTypeSerializer;
class VersionedModelCacheImpl;

/// The versions of one capability's models, over a file cache that holds the files. Failures are
/// std::runtime_error; a missing file is not a failure. Not thread-safe.
class CapabilityModelCache {
 public:
  /// Deletes all versions except one, and the files that it does not share. Deletes nothing if that
  /// version does not exist: better too many models than none.
  virtual void trimExceptVersion(int version);

  virtual ~CapabilityModelCache();

  /// Records a cached file under the version. Returns false if the file cache does not have its
  /// key. Throws "Unknown serialized type: NAME" if the capability has no such model.
  virtual bool addModelForVersionIfInCache(int version, const CapabilityModel& model);

  /// Returns whether all files of the version are recorded and cached.
  virtual bool hasModelsForVersion(int version) = 0;

  /// Returns all versions, complete or not, the most recently changed last.
  std::vector<int> queryVersions();

  /// Deletes the version, if it exists, and those of its files that no other version shares.
  void deleteVersion(int version);

 protected:
  /// `typeNames` are the capability's. Accesses neither the file cache nor the disk.
  CapabilityModelCache(std::shared_ptr<IFileCache> fileCache, ModelTypeNames typeNames);

  /// Returns the version's files that are still cached, and promotes them.
  ModelEntries queryEntries(int version);

 private:
  quovix::shared_ref<CapabilityModelTypeSerializer> typeSerializer_;
  quovix::unique_ref<VersionedModelCacheImpl> cache_;
};

}  // namespace zentrel::vistabase::ardelivery
