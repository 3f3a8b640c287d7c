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

/// Files under one root directory, each under a key, within a byte budget: what was not used for
/// longest goes first. Any thread may call anything at any time; a kill, a power cut or a full disk
/// costs no committed entry; and a root has one store, in this process and in all others.
///
/// A key is UTF-8 text whose file name (see docs/on-disk.md) has at most 244 characters;
/// std::invalid_argument otherwise. Failures are StoreError. A closed store throws UsageError, and
/// so does one that a soft-error sink calls in the middle of a call of its own.
class FileStore {
 public:
  /// Opens the store of a directory, which is created with its parents if it is missing. The budget
  /// is in bytes, of all entries together. Throws StoreError as InUse, and std::invalid_argument if
  /// the budget is negative or the root holds the models of a ModelStore.
  static std::unique_ptr<FileStore> open(const std::string& root, std::int64_t maxSizeBytes);

  /// Closes it.
  virtual ~FileStore() = default;

  /// The path of an entry, which thereby counts as used; none if there is no such entry, and only
  /// then. The file stays until the entry is replaced, removed, or evicted by a later commit.
  virtual std::optional<std::string> get(const std::string& key) = 0;

  /// Begins to write an entry. What is there stays until the writer commits. Throws UsageError if
  /// the entry is being written already. The writer fails as soon as the whole budget is exceeded.
  virtual std::unique_ptr<EntryWriter> write(const std::string& key) = 0;

  /// The same for known content: the commit checks it, and what an earlier writer of that content
  /// got, also before a kill, is resumed. `sha256` has 64 hexadecimal digits.
  virtual std::unique_ptr<EntryWriter> write(const std::string& key, std::int64_t sizeBytes,
                                             const std::string& sha256) = 0;

  /// Writes all of an entry, from `out.offset()` on, or throws. Committing is up to the store.
  using Fetch = std::function<void(EntryWriter& out)>;

  /// The path of an entry, which `fetch` gets if there is none. Of several threads that ask for one
  /// key, one fetches, and the others wait for the result: all of them get what it throws. Throws
  /// UsageError if the entry is being written, or if fetches wait for each other.
  virtual std::string getOrFetch(const std::string& key, const Fetch& fetch) = 0;
  /// The same for known content. An entry of that size that is there already is not read again.
  virtual std::string getOrFetch(const std::string& key, std::int64_t sizeBytes,
                                 const std::string& sha256, const Fetch& fetch) = 0;

  /// Deletes an entry and its extra bytes. False if there was none.
  virtual bool remove(const std::string& key) = 0;
  /// Deletes all entries, and what unfinished writers have left.
  virtual void clear() = 0;

  /// The extra bytes of an entry; none if it has none.
  virtual std::optional<BytesVector> extra(const std::string& key) = 0;
  /// Gives an entry extra bytes, 16 MiB at most, in place of those that it has. They go with its
  /// content. False if there is no such entry.
  virtual bool setExtra(const std::string& key, const BytesVector& extra) = 0;

  /// The keys of all entries, in no particular order. What others have put into the root under a
  /// name that no key has counts for `size`, but is not among them.
  virtual std::vector<std::string> keys() = 0;
  /// The bytes of all entries together, as they lie on the disk now.
  virtual std::int64_t size() = 0;
  /// Changes the budget, which the next commit keeps.
  virtual void setMaxSizeBytes(std::int64_t bytes) = 0;

  /// Ends all writing and lets go of the root. Calling it again does nothing.
  virtual void close() = 0;
};

}  // namespace zentrel::vistabase::ardelivery
