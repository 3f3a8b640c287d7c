#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Caches of files, and of the versions of models in them.
namespace zentrel::vistabase::ardelivery {

/// Opaque bytes that a caller attaches to an entry.
using BytesVector = std::vector<std::uint8_t>;

/// Where an entry lies on disk. Only a path: it keeps nothing alive and unlocks nothing.
struct FileCacheEntry {
  std::string path;  ///< Full path of the entry, a regular file or a directory.
};

/// What the cache tells of one entry beyond its path.
struct FileCacheEntryMeta {
  /// With these bytes.
  explicit FileCacheEntryMeta(BytesVector extraBytes) : extra(std::move(extraBytes)) {}

  BytesVector extra;  ///< The bytes that updateExtra last wrote.
};

/// Files and directories under one root directory, each under a string key, within a byte budget.
///
/// A writer calls insertAndLock, writes the content at the returned path, then calls commit and
/// unlock. A reader calls getCacheEntry (which promotes the entry, so that it is evicted later) or
/// getCacheEntryWithoutPromotion, and opens the returned path.
///
/// The state on disk is the truth between operations: each operation but commit(key) and
/// getCacheEntryWithoutPromotion starts by rebuilding its records from the metadata file and the
/// directory. What an operation changes without saving (a lock, a new record, a promotion by
/// memContains) therefore lasts only until the next one. The owner creates the root directory
/// before the first use, and again after clear.
///
/// Failures of the filesystem or of the metadata file are thrown as std::exception, unless the
/// cache comes from createFileCache. One thread at a time; two caches over one root are not
/// coordinated.
class IFileCache {
 public:
  /// Whether the records hold a key.
  enum class MemContainsStatus {
    Present = 0,
    Absent = 1,
    Unknown = 2,  ///< The question failed; only FileCacheWithErrorLogging answers so.
  };

  virtual ~IFileCache() = default;

  /// Records the key (size 0) and locks it, drops its extra bytes, and returns where to write its
  /// content. What lies there already stays. Never null; saves nothing.
  virtual std::shared_ptr<FileCacheEntry> insertAndLock(const std::string& key) = 0;

  /// Measures what lies at the entry's path and commits it with that size.
  virtual void commit(const std::string& key) = 0;

  /// Records the size (bytes) of a recorded key, evicts the least recently used entries until the
  /// total fits the budget, and saves. Does not unlock.
  virtual void commit(const std::string& key, std::int64_t size) = 0;

  /// Clears the key's lock and saves.
  virtual void unlock(const std::string& key) = 0;

  /// The entry, promoted and saved, or null when nothing lies at its path.
  virtual std::shared_ptr<FileCacheEntry> getCacheEntry(const std::string& key) = 0;

  /// The entry, or null when nothing lies at its path. Does not touch the records at all.
  virtual std::shared_ptr<FileCacheEntry> getCacheEntryWithoutPromotion(const std::string& key) = 0;

  /// Replaces the key's extra bytes; false, with nothing written, when the key is not recorded.
  virtual bool updateExtra(const std::string& key, BytesVector&& extra) = 0;

  /// The recorded keys, as their files are named, with their extra bytes; keys without are left
  /// out.
  virtual std::vector<std::pair<std::string, FileCacheEntryMeta>> getAllMetas() = 0;

  /// Whether the key is recorded. Promotes it if so, without saving.
  virtual MemContainsStatus memContains(const std::string& key) = 0;

  /// Deletes the entry's file or directory and, if there was one, its record and extra bytes.
  /// Saves in every case; false when nothing was there.
  virtual bool remove(const std::string& key) = 0;

  /// The sum of all recorded sizes, in bytes.
  virtual std::int64_t getSize() = 0;

  /// Deletes the whole root directory.
  virtual void clear() = 0;

  /// Writes out extra bytes that an implementation holds back.
  virtual void flushExtra() = 0;
};

}  // namespace zentrel::vistabase::ardelivery
