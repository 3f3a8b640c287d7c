#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "delivery/FileCache/IFileCache.h"
#include "store/EntryWriter.h"
#include "store/StoreError.h"

namespace zentrel::vistabase::ardelivery {

/// Files under one root directory, each under a key, within a byte budget; the least recently used
/// are evicted first. Thread-safe. A kill, a power cut or a full disk loses no committed entry. A
/// root has one store at a time, across all processes.
///
/// A key is UTF-8 text whose file name (see docs/on-disk.md) has 1 to 244 characters; any other key
/// is std::invalid_argument. Failures are StoreError. Calls throw UsageError once the store is
/// closed, and when a soft-error sink makes them from inside another call of the store.
class FileStore {
 public:
  /// Opens the store in the directory `root`, creating it and its parents if missing. The budget is
  /// for all entries together, in bytes. Throws StoreError (InUse) if another store has the root,
  /// and std::invalid_argument if the budget is negative or the root holds a ModelStore's models.
  static std::unique_ptr<FileStore> open(const std::string& root, std::int64_t maxSizeBytes);

  /// Closes the store.
  virtual ~FileStore() = default;

  /// Returns the path of an entry and marks it as used; nullopt only if there is no such entry. The
  /// file stays until the entry is replaced, removed, or evicted by a later commit.
  virtual std::optional<std::string> get(const std::string& key) = 0;

  /// Starts writing an entry. An existing one stays until the writer commits. Throws UsageError if
  /// the entry is already being written. The writer fails once it exceeds the whole budget.
  virtual std::unique_ptr<EntryWriter> write(const std::string& key) = 0;

  /// The same for known content: the commit checks it, and the bytes that an earlier writer of that
  /// content received, even before a kill, are resumed. `sha256` has 64 hexadecimal digits.
  virtual std::unique_ptr<EntryWriter> write(const std::string& key, std::int64_t sizeBytes,
                                             const std::string& sha256) = 0;

  /// Writes all of an entry, from `out.offset()` on, or throws. The store commits it.
  using Fetch = std::function<void(EntryWriter& out)>;

  /// Returns the path of an entry, calling `fetch` if there is none. If several threads ask for the
  /// same key, one fetches and the others wait; all get its result or its exception. Throws
  /// UsageError if the entry is being written, or if waiting would deadlock with another fetch.
  virtual std::string getOrFetch(const std::string& key, const Fetch& fetch) = 0;
  /// The same for known content. An existing entry of that size is not read again.
  virtual std::string getOrFetch(const std::string& key, std::int64_t sizeBytes,
                                 const std::string& sha256, const Fetch& fetch) = 0;

  /// Deletes an entry and its extra bytes. Returns false if there was none.
  virtual bool remove(const std::string& key) = 0;
  /// Deletes all entries, and whatever unfinished writers left behind.
  virtual void clear() = 0;

  /// Returns the extra bytes of an entry, or nullopt if it has none.
  virtual std::optional<BytesVector> extra(const std::string& key) = 0;
  /// Attaches extra bytes, 16 MiB at most, to an entry, replacing those that it has. They are
  /// deleted when its content is replaced or deleted. Returns false if there is no such entry.
  virtual bool setExtra(const std::string& key, const BytesVector& extra) = 0;

  /// Returns the keys of all entries, in no particular order. Files that others put into the root
  /// under a name that no key has count toward `size`, but are not listed.
  virtual std::vector<std::string> keys() = 0;
  /// Returns the total size of all entries as they are on disk now, in bytes.
  virtual std::int64_t size() = 0;
  /// Changes the budget; the next commit enforces it.
  virtual void setMaxSizeBytes(std::int64_t bytes) = 0;

  /// Closes all writers and releases the root. Idempotent.
  virtual void close() = 0;
};

}  // namespace zentrel::vistabase::ardelivery
