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

/// Which cached files make up which version of a capability's models. The files are put into the
/// file cache by others; this keeps the index of their keys, as the content of the entry
/// "versioned_index" of the same file cache.
///
/// The index is read once per object and then served from memory: changes made to it by anyone else
/// are not seen. A failed first load is tried again by the next operation. When the index cannot be
/// written, memory is ahead of the disk until the next write.
///
/// Failures are std::runtime_error with a prefix that names the operation. One thread at a time.
class VersionedModelCacheImpl {
 public:
  /// Key of the index's entry. The same for every capability: each belongs in a file cache of its
  /// own.
  static constexpr const char* kIndexKey = kIndexName;

  /// Touches neither the file cache nor the disk.
  VersionedModelCacheImpl(std::unique_ptr<IFileIO> fileIO,
                          std::unique_ptr<ICacheDescriptorSerializer> descriptorSerializer,
                          std::shared_ptr<IFileCache> fileCache,
                          std::shared_ptr<CapabilityModelTypeSerializer> typeSerializer);

  /// Records the model under the version, in place of another one of its type. False, with nothing
  /// changed, when the file cache does not hold its key; otherwise the file is promoted.
  bool addModelIfInCache(int version, const ModelRecord& model);

  /// The version's files that are still cached; each is promoted.
  ModelEntries queryEntries(int version);

  /// All versions, the last changed one last.
  std::vector<int> queryVersions();

  /// Deletes the version and those of its files that no other version shares. Nothing happens when
  /// there is no such version.
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
