#pragma once

#include "delivery/FileCache/IFileCache.h"
#include "support/util/memory/shared_ref.h"

namespace zentrel::vistabase::ardelivery {

/// Wraps a file cache that throws in one that does not: reports each failure as one soft error and
/// returns a neutral result (null, false, 0, empty, Unknown). Retries nothing, and does not restore
/// the wrapped cache's state.
class FileCacheWithErrorLogging final : public IFileCache {
 public:
  explicit FileCacheWithErrorLogging(quovix::shared_ref<IFileCache> cache) noexcept;

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
  quovix::shared_ref<IFileCache> cache_;
};

}  // namespace zentrel::vistabase::ardelivery
