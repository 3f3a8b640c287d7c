#include "delivery/FileCache/FileCacheImpl.h"

#include "delivery/FileCache/CacheKey.h"
#include "delivery/FileCache/CacheMetadata.h"
#include "delivery/FileNames.h"

namespace zentrel::vistabase::ardelivery {
namespace {

std::shared_ptr<FileCacheEntry> makeEntry(const boost::filesystem::path& path) {
  return std::make_shared<FileCacheEntry>(FileCacheEntry{path.string()});
}

}  // namespace

FileCacheImpl::FileCacheImpl(const std::string& root, quovix::unique_ref<IFileIO> fileIO,
                             quovix::unique_ref<ICacheMetadataSerializer> serializer,
                             quovix::unique_ref<ICacheMetadataFilesystemSynchronizer> synchronizer,
                             quovix::shared_ref<IFilesystemOperations> filesystem,
                             quovix::unique_ref<ICacheEvictor> evictor)
    : root_(root),
      metadataFile_(root_ / kMetadataName),
      extraDirectory_(root_ / kExtraName),
      fileIO_(std::move(fileIO)),
      serializer_(std::move(serializer)),
      synchronizer_(std::move(synchronizer)),
      filesystem_(std::move(filesystem)),
      evictor_(std::move(evictor)),
      metadata_(quovix::make_unique_ref<CacheMetadata>()) {}

FileCacheImpl::~FileCacheImpl() {
  if (loaded_) {
    try {
      saveMetadata(*metadata_);
    } catch (...) {
      // A destructor cannot report it.
    }
  }
}

std::shared_ptr<FileCacheEntry> FileCacheImpl::insertAndLock(const std::string& key) {
  const std::string name = fileNameOf(key);
  ensureLoaded();
  filesystem_->createDirectories(root_);
  metadata_->lockEntry(name);
  removeExtraFile(name);
  return makeEntry(pathOf(name));
}

void FileCacheImpl::commit(const std::string& key) {
  const std::string name = fileNameOf(key);
  const std::uint64_t size = filesystem_->getSize(pathOf(name));
  // The overload escapes the name a second time, so the size of a key with a special character is
  // not recorded; only the reload that adopts the file does that.
  commit(name, static_cast<std::int64_t>(size));
}

void FileCacheImpl::commit(const std::string& key, std::int64_t size) {
  const std::string name = fileNameOf(key);
  ensureLoaded();
  metadata_->setEntrySize(name, size);
  for (const std::string& evicted : evictor_->selectKeysToEvict(*metadata_)) {
    // Escapes the name as if it were a key, so entries with special characters are never evicted.
    removeEntry(escapeKey(evicted));
  }
  saveMetadata(*metadata_);
}

void FileCacheImpl::unlock(const std::string& key) {
  const std::string name = fileNameOf(key);
  ensureLoaded();
  metadata_->unlockEntry(name);
  saveMetadata(*metadata_);
}

std::shared_ptr<FileCacheEntry> FileCacheImpl::getCacheEntry(const std::string& key) {
  const std::string name = fileNameOf(key);
  ensureLoaded();
  const boost::filesystem::path path = pathOf(name);
  if (!filesystem_->exists(path)) {
    return nullptr;
  }
  metadata_->touchEntry(name);
  saveMetadata(*metadata_);
  return makeEntry(path);
}

std::shared_ptr<FileCacheEntry> FileCacheImpl::getCacheEntryWithoutPromotion(
    const std::string& key) {
  const boost::filesystem::path path = pathOf(fileNameOf(key));
  return filesystem_->exists(path) ? makeEntry(path) : nullptr;
}

bool FileCacheImpl::updateExtra(const std::string& key, BytesVector&& extra) {
  const std::string name = fileNameOf(key);
  ensureLoaded();
  if (!metadata_->hasEntry(name)) {
    return false;
  }
  filesystem_->createDirectories(extraDirectory_);
  fileIO_->writeFile((extraDirectory_ / name).string(), std::string(extra.begin(), extra.end()));
  return true;
}

std::vector<std::pair<std::string, FileCacheEntryMeta>> FileCacheImpl::getAllMetas() {
  ensureLoaded();
  std::vector<std::pair<std::string, FileCacheEntryMeta>> metas;
  if (!filesystem_->exists(extraDirectory_)) {
    return metas;
  }
  for (const auto& [name, entry] : metadata_->getEntries()) {
    const boost::filesystem::path path = extraDirectory_ / name;
    if (filesystem_->isFile(path)) {
      const std::string extra = fileIO_->readFile(path.string());
      metas.emplace_back(name, FileCacheEntryMeta(BytesVector(extra.begin(), extra.end())));
    }
  }
  return metas;
}

IFileCache::MemContainsStatus FileCacheImpl::memContains(const std::string& key) {
  ensureLoaded();
  // A refused key is not an error here; it is simply absent.
  const std::string name = escapeKey(key);
  if (isRefused(key) || !metadata_->hasEntry(name)) {
    return MemContainsStatus::Absent;
  }
  metadata_->touchEntry(name);
  return MemContainsStatus::Present;
}

bool FileCacheImpl::remove(const std::string& key) {
  const bool removed = removeEntry(fileNameOf(key));
  saveMetadata(*metadata_);
  return removed;
}

std::int64_t FileCacheImpl::getSize() {
  ensureLoaded();
  return metadata_->getTotalSize();
}

void FileCacheImpl::clear() {
  ensureLoaded();
  metadata_->clearEntries();
  filesystem_->removeAll(root_);
}

void FileCacheImpl::flushExtra() {}

/// Never sets `loaded_`: files come and go behind the cache's back, and callers rely on every
/// operation starting from disk.
void FileCacheImpl::ensureLoaded() {
  if (!loaded_) {
    metadata_ = loadMetadata();
  }
}

quovix::unique_ref<ICacheMetadata> FileCacheImpl::loadMetadata() {
  auto stored = filesystem_->isFile(metadataFile_)
                    ? serializer_->deserialize(fileIO_->readFile(metadataFile_.string()))
                    : quovix::unique_ref<ICacheMetadata>(std::make_unique<CacheMetadata>());
  SynchronizationResult result =
      synchronizer_->synchronize(std::move(stored).release(), root_, {kMetadataName, kExtraName});
  if (result.changed) {
    saveMetadata(*result.metadata);
  }
  return std::move(result.metadata);
}

void FileCacheImpl::saveMetadata(const ICacheMetadata& metadata) {
  filesystem_->createDirectories(root_);
  fileIO_->writeFile(metadataFile_.string(), serializer_->serialize(metadata));
}

void FileCacheImpl::removeExtraFile(const std::string& name) {
  if (filesystem_->exists(extraDirectory_)) {
    filesystem_->remove(extraDirectory_ / name);
  }
}

bool FileCacheImpl::removeEntry(const std::string& name) {
  ensureLoaded();
  const boost::filesystem::path path = pathOf(name);
  const bool removed =
      filesystem_->isFile(path) ? filesystem_->remove(path) : filesystem_->removeAll(path);
  if (removed) {
    metadata_->removeEntry(name);
    removeExtraFile(name);
  }
  return removed;
}

}  // namespace zentrel::vistabase::ardelivery
