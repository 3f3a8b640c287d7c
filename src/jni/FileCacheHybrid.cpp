#include "jni/FileCacheHybrid.h"

namespace zentrel::vistabase::ardelivery {

FileCacheHybrid::FileCacheHybrid(quovix::shared_ref<IFileCache> cache) noexcept
    : cache_(std::move(cache)) {}

std::shared_ptr<FileCacheEntry> FileCacheHybrid::getCacheEntry(const std::string& key) {
  return cache_->getCacheEntry(key);
}

std::shared_ptr<FileCacheEntry> FileCacheHybrid::getCacheEntryWithoutPromotion(
    const std::string& key) {
  return cache_->getCacheEntryWithoutPromotion(key);
}

bool FileCacheHybrid::updateExtra(const std::string& key, BytesVector extra) {
  return cache_->updateExtra(key, std::move(extra));
}

std::vector<std::pair<std::string, FileCacheEntryMeta>> FileCacheHybrid::getAllMetas() {
  return cache_->getAllMetas();
}

quovix::shared_ref<IFileCache> FileCacheHybrid::getFileCache() {
  cache_.invariant_();
  return cache_;
}

bool FileCacheHybrid::remove(const std::string& key) {
  return cache_->remove(key);
}

std::shared_ptr<FileCacheEntry> FileCacheHybrid::insertAndLock(const std::string& key) {
  return cache_->insertAndLock(key);
}

void FileCacheHybrid::unlock(const std::string& key) {
  cache_->unlock(key);
}

void FileCacheHybrid::commit(const std::string& key) {
  cache_->commit(key);
}

void FileCacheHybrid::clear() {
  cache_->clear();
}

std::int64_t FileCacheHybrid::getSize() {
  return cache_->getSize();
}

void FileCacheHybrid::flush() {
  cache_->flushExtra();
}

}  // namespace zentrel::vistabase::ardelivery
