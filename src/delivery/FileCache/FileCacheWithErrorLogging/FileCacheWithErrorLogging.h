#pragma once

#include "delivery/FileCache/IFileCache.h"
#include "support/util/memory/shared_ref.h"

namespace zentrel::vistabase::ardelivery {

/// Makes a file cache that never throws out of one that does: a failure is reported as one soft
/// error and answered with a neutral result (null, false, 0, empty, Unknown). Nothing is retried,
/// and the wrapped cache stays in whatever state it was left.
class FileCacheWithErrorLogging final : public IFileCache {
 public:
  /// Wraps `cache`.
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
