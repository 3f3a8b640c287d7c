#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "delivery/FileCache/IFileCache.h"
#include "jni/CacheHybrid.h"
#include "support/util/memory/shared_ref.h"

namespace zentrel::vistabase::ardelivery {

/// The native peer of a managed file cache. Forwards calls to an IFileCache, which it shares with
/// the model caches over the same managed object.
class FileCacheHybrid : public CacheHybrid {
 public:
  explicit FileCacheHybrid(quovix::shared_ref<IFileCache> cache)
      : CacheHybrid(std::make_shared<SingleThreadGuard>()), cache_(std::move(cache)) {}

  virtual std::shared_ptr<FileCacheEntry> getCacheEntry(const std::string& key) {
    return cache_->getCacheEntry(key);
  }
  virtual std::shared_ptr<FileCacheEntry> getCacheEntryWithoutPromotion(const std::string& key) {
    return cache_->getCacheEntryWithoutPromotion(key);
  }
  virtual bool updateExtra(const std::string& key, BytesVector extra) {
    return cache_->updateExtra(key, std::move(extra));
  }
  virtual std::vector<std::pair<std::string, FileCacheEntryMeta>> getAllMetas() {
    return cache_->getAllMetas();
  }
  virtual quovix::shared_ref<IFileCache> getFileCache() {
    cache_.invariant_();
    return cache_;
  }
  virtual bool remove(const std::string& key) { return cache_->remove(key); }
  virtual std::shared_ptr<FileCacheEntry> insertAndLock(const std::string& key) {
    return cache_->insertAndLock(key);
  }
  virtual void unlock(const std::string& key) { cache_->unlock(key); }
  virtual void commit(const std::string& key) { cache_->commit(key); }
  virtual void clear() { cache_->clear(); }
  virtual std::int64_t getSize() { return cache_->getSize(); }
  virtual void flush() { cache_->flushExtra(); }

 private:
  quovix::shared_ref<IFileCache> cache_;
};

}  // namespace zentrel::vistabase::ardelivery
