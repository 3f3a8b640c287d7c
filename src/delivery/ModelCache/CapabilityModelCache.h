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
/// std::runtime_error; a missing file is none. One thread at a time.
class CapabilityModelCache {
 public:
  /// Deletes all versions but one, with the files that it does not share. Nothing is deleted when
  /// the version to keep is not there: better too many models than none.
  virtual void trimExceptVersion(int version);

  virtual ~CapabilityModelCache();

  /// Records a cached file under the version. False when the file cache does not hold its key;
  /// throws "Unknown serialized type: NAME" when the capability has no such model.
  virtual bool addModelForVersionIfInCache(int version, const CapabilityModel& model);

  /// Whether all files of the version are recorded and cached.
  virtual bool hasModelsForVersion(int version) = 0;

  /// All versions, complete or not, the last changed one last.
  std::vector<int> queryVersions();

  /// Deletes the version and those of its files that no other version shares. Nothing happens when
  /// there is no such version.
  void deleteVersion(int version);

 protected:
  /// `typeNames` are the capability's. Touches neither the file cache nor the disk.
  CapabilityModelCache(std::shared_ptr<IFileCache> fileCache, ModelTypeNames typeNames);

  /// The version's files that are still cached; each is promoted.
  ModelEntries queryEntries(int version);

 private:
  quovix::shared_ref<CapabilityModelTypeSerializer> typeSerializer_;
  quovix::unique_ref<VersionedModelCacheImpl> cache_;
};

}  // namespace zentrel::vistabase::ardelivery
