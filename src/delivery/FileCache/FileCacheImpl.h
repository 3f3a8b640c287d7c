#pragma once

#include <boost/filesystem/path.hpp>

#include "delivery/FileCache/ICacheEvictor.h"
#include "delivery/FileCache/ICacheMetadata.h"
#include "delivery/FileCache/ICacheMetadataFilesystemSynchronizer.h"
#include "delivery/FileCache/ICacheMetadataSerializer.h"
#include "delivery/FileCache/IFileCache.h"
#include "delivery/Storage/IFileIO.h"
#include "delivery/Storage/IFilesystemOperations.h"
#include "support/util/memory/shared_ref.h"
#include "support/util/memory/unique_ref.h"

namespace zentrel::vistabase::ardelivery {

/// The file cache over one root directory:
///   ROOT/NAME           an entry, a file or a directory; NAME is the escaped key
///   ROOT/metadata.json  the records
///   ROOT/extra/NAME     an entry's extra bytes, if it has any
///
/// Each operation is a fixed sequence of calls on the components. Their exceptions propagate, and
/// leave the operation partly done on disk.
class FileCacheImpl : public IFileCache {
 public:
  /// Does no I/O.
  FileCacheImpl(const std::string& root, quovix::unique_ref<IFileIO> fileIO,
                quovix::unique_ref<ICacheMetadataSerializer> serializer,
                quovix::unique_ref<ICacheMetadataFilesystemSynchronizer> synchronizer,
                quovix::shared_ref<IFilesystemOperations> filesystem,
                quovix::unique_ref<ICacheEvictor> evictor);
  ~FileCacheImpl() override;

  std::shared_ptr<FileCacheEntry> insertAndLock(const std::string& key) override;
  void commit(const std::string& key) override;
  void commit(const std::string& key, std::int64_t size) override;
  void unlock(const std::string& key) override;
  std::shared_ptr<FileCacheEntry> getCacheEntry(const std::string& key) override;
  std::shared_ptr<FileCacheEntry> getCacheEntryWithoutPromotion(const std::string& key) override;
  bool updateExtra(const std::string& key, BytesVector&& extra) override;
  std::vector<std::pair<std::string, FileCacheEntryMeta>> getAllMetas() override;
  MemContainsStatus memContains(const std::string& key) override;
  bool remove(const std::string& key) override;
  std::int64_t getSize() override;
  void clear() override;
  void flushExtra() override;

 private:
  boost::filesystem::path pathOf(const std::string& name) const { return root_ / name; }
  void ensureLoaded();
  quovix::unique_ref<ICacheMetadata> loadMetadata();
  void saveMetadata(const ICacheMetadata& metadata);
  void removeExtraFile(const std::string& name);
  bool removeEntry(const std::string& name);

  const boost::filesystem::path root_;
  const boost::filesystem::path metadataFile_;
  const boost::filesystem::path extraDirectory_;
  quovix::unique_ref<IFileIO> fileIO_;
  quovix::unique_ref<ICacheMetadataSerializer> serializer_;
  quovix::unique_ref<ICacheMetadataFilesystemSynchronizer> synchronizer_;
  quovix::shared_ref<IFilesystemOperations> filesystem_;
  quovix::unique_ref<ICacheEvictor> evictor_;
  bool loaded_ = false;
  quovix::unique_ref<ICacheMetadata> metadata_;
};

}  // namespace zentrel::vistabase::ardelivery
