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

/// The location of an entry on disk. Only a path: it keeps nothing alive and unlocks nothing.
struct FileCacheEntry {
  std::string path;  ///< Full path of the entry, a regular file or a directory.
};

/// What the cache knows about an entry besides its path.
struct FileCacheEntryMeta {
  /// With these extra bytes.
  explicit FileCacheEntryMeta(BytesVector extraBytes) : extra(std::move(extraBytes)) {}

  BytesVector extra;  ///< The bytes last written by updateExtra.
};

/// Files and directories under one root directory, each under a string key, within a byte budget.
///
/// A writer calls insertAndLock, writes the content at the returned path, then calls commit and
/// unlock. A reader calls getCacheEntry (which promotes the entry, so that it is evicted later) or
/// getCacheEntryWithoutPromotion, and opens the returned path.
///
/// Between operations, the state on disk is authoritative: every operation except commit(key) and
/// getCacheEntryWithoutPromotion first rebuilds its records from the metadata file and the
/// directory. What an operation changes without saving (a lock, a new record, a promotion by
/// memContains) is therefore lost at the next one. The owner creates the root directory before the
/// first use, and again after clear.
///
/// Failures of the filesystem or the metadata file are thrown as std::exception, unless the cache
/// comes from createFileCache. Not thread-safe, and two caches over one root are not coordinated.
class IFileCache {
 public:
  /// Whether the records hold a key.
  enum class MemContainsStatus {
    Present = 0,
    Absent = 1,
    Unknown = 2,  ///< The lookup failed; only FileCacheWithErrorLogging returns this.
  };

  virtual ~IFileCache() = default;

  /// Records the key (size 0) and locks it, drops its extra bytes, and returns where to write its
  /// content. Keeps existing content. Never returns null; saves nothing.
  virtual std::shared_ptr<FileCacheEntry> insertAndLock(const std::string& key) = 0;

  /// Measures what is at the entry's path and commits it with that size.
  virtual void commit(const std::string& key) = 0;

  /// Records the size (bytes) of a recorded key, evicts the least recently used entries until the
  /// total fits the budget, and saves. Does not unlock.
  virtual void commit(const std::string& key, std::int64_t size) = 0;

  /// Clears the key's lock and saves.
  virtual void unlock(const std::string& key) = 0;

  /// Promotes the entry, saves, and returns it, or null if nothing is at its path.
  virtual std::shared_ptr<FileCacheEntry> getCacheEntry(const std::string& key) = 0;

  /// Returns the entry, or null if nothing is at its path. Does not touch the records at all.
  virtual std::shared_ptr<FileCacheEntry> getCacheEntryWithoutPromotion(const std::string& key) = 0;

  /// Replaces the key's extra bytes. Returns false and writes nothing if the key is not recorded.
  virtual bool updateExtra(const std::string& key, BytesVector&& extra) = 0;

  /// Returns the recorded keys, as file names, with their extra bytes. Omits keys without any.
  virtual std::vector<std::pair<std::string, FileCacheEntryMeta>> getAllMetas() = 0;

  /// Returns whether the key is recorded. Promotes it if so, without saving.
  virtual MemContainsStatus memContains(const std::string& key) = 0;

  /// Deletes the entry's file or directory and, if there was one, its record and extra bytes.
  /// Always saves. Returns false if there was nothing to delete.
  virtual bool remove(const std::string& key) = 0;

  /// Returns the sum of all recorded sizes, in bytes.
  virtual std::int64_t getSize() = 0;

  /// Deletes the whole root directory.
  virtual void clear() = 0;

  /// Writes out any extra bytes that the implementation buffers.
  virtual void flushExtra() = 0;
};

}  // namespace zentrel::vistabase::ardelivery
