#pragma once

#include <memory>
#include <vector>

#include "delivery/FileCache/IFileCache.h"
#include "delivery/FileNames.h"
#include "delivery/ModelCache/CacheDescriptor.h"
#include "delivery/ModelCache/CapabilityModel.h"
#include "delivery/ModelCache/CapabilityModelTypeSerializer.h"
#include "delivery/ModelCache/ICacheDescriptorSerializer.h"
#include "delivery/Storage/IFileIO.h"
#include "support/util/memory/shared_ref.h"
#include "support/util/memory/unique_ref.h"

namespace zentrel::vistabase::ardelivery {

/// Records which cached files make up which version of a capability's models. Others put the files
/// into the file cache; this keeps the index of their keys, in the entry "versioned_index" of the
/// same file cache.
///
/// The index is read once per object and then served from memory: changes by anyone else are not
/// seen. If the first load fails, the next operation retries it. If the index cannot be written,
/// memory is ahead of the disk until the next write.
///
/// Failures are std::runtime_error with a prefix that names the operation. Not thread-safe.
class VersionedModelCacheImpl {
 public:
  /// The key of the index entry. It is the same for every capability, so each needs its own file
  /// cache.
  static constexpr const char* kIndexKey = kIndexName;

  /// Accesses neither the file cache nor the disk.
  VersionedModelCacheImpl(std::unique_ptr<IFileIO> fileIO,
                          std::unique_ptr<ICacheDescriptorSerializer> descriptorSerializer,
                          std::shared_ptr<IFileCache> fileCache,
                          std::shared_ptr<CapabilityModelTypeSerializer> typeSerializer);

  /// Records the model under the version, replacing one of the same type, and promotes its file.
  /// Returns false and changes nothing if the file cache does not have its key.
  bool addModelIfInCache(int version, const ModelRecord& model);

  /// Returns the version's files that are still cached, and promotes them.
  ModelEntries queryEntries(int version);

  /// Returns all versions, the most recently changed last.
  std::vector<int> queryVersions();

  /// Deletes the version, if it exists, and those of its files that no other version shares.
  void deleteVersion(int version);

 private:
  void ensureLoaded();
  std::unique_ptr<CacheDescriptor> loadDescriptor();
  void storeDescriptor();
  void replaceDescriptor(CacheDescriptor descriptor);
  const VersionRecord* findVersion(int version) const;
  void add(int version, const ModelRecord& model);
  std::vector<std::string> unsharedKeys(const VersionRecord& record) const;

  quovix::unique_ref<IFileIO> fileIO_;
  quovix::unique_ref<ICacheDescriptorSerializer> descriptorSerializer_;
  quovix::shared_ref<IFileCache> fileCache_;
  quovix::shared_ref<CapabilityModelTypeSerializer> typeSerializer_;
  bool descriptorLoaded_ = false;
  quovix::unique_ref<CacheDescriptor> descriptor_;
};

}  // namespace zentrel::vistabase::ardelivery
