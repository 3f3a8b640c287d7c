#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "delivery/FileCache/IFileCache.h"
#include "platform/zentreljni/HybridBase.h"
#include "support/util/memory/shared_ref.h"

namespace zentrel::vistabase::ardelivery {

/// The native peer of a managed file cache: passes each call on to an IFileCache, which the model
/// caches built over the same managed object share.
class FileCacheHybrid : public jni::HybridBase {
 public:
  explicit FileCacheHybrid(quovix::shared_ref<IFileCache> cache) noexcept;

  virtual std::shared_ptr<FileCacheEntry> getCacheEntry(const std::string& key);
  virtual std::shared_ptr<FileCacheEntry> getCacheEntryWithoutPromotion(const std::string& key);
  virtual bool updateExtra(const std::string& key, BytesVector extra);
  virtual std::vector<std::pair<std::string, FileCacheEntryMeta>> getAllMetas();
  virtual quovix::shared_ref<IFileCache> getFileCache();
  virtual bool remove(const std::string& key);
  virtual std::shared_ptr<FileCacheEntry> insertAndLock(const std::string& key);
  virtual void unlock(const std::string& key);
  virtual void commit(const std::string& key);
  virtual void clear();
  virtual std::int64_t getSize();
  virtual void flush();

 private:
  quovix::shared_ref<IFileCache> cache_;
};

}  // namespace zentrel::vistabase::ardelivery
