#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "store/ExtraBytes.h"
#include "store/IDisk.h"
#include "support/util/FunctionRef.h"

namespace zentrel::vistabase::ardelivery {

/// The entries of a root, with their sizes and LRU order. Both are read once and cached, since a
/// root has one owner. The order persists as file modification times. Requires the root's lock.
///
/// Part files that a FileStore keeps for resuming count as entries, so that they can be evicted.
class EntryDirectory {
 public:
  using IsKept = FunctionRef<bool(const std::string& name)>;

  explicit EntryDirectory(IDirectory& root) noexcept : root_(root), extras_(root) {}

  /// Rereads sizes and order from disk. Otherwise they are read on first use.
  void reload();

  /// The size of all entries, in bytes.
  std::int64_t total();
  /// The size of an entry, in bytes; 0 if there is none.
  std::int64_t size(const std::string& name);
  /// The names of all entries.
  std::vector<std::string> names();
  ExtraBytes& extras() noexcept { return extras_; }

  /// Marks an entry as the most recently used. Returns false if there is none.
  bool use(const std::string& name);
  /// Updates one entry from disk: it may be new, have another size, or be gone.
  void measure(const std::string& name);

  /// Renames a part file to an entry, the most recently used, replacing an earlier entry and its
  /// extra bytes. Durable once the root is synced.
  void place(const std::string& part, const std::string& name);

  /// Deletes an entry and its extra bytes. Returns false if there is none.
  bool drop(const std::string& name);

  /// The least recently used entries that add up to `bytes`, or all of them if they are smaller,
  /// skipping those kept.
  std::vector<std::string> leastRecentlyUsed(std::int64_t bytes, IsKept isKept);
  /// Deletes such entries until `bytes` more fit the budget. If that is impossible, deletes nothing
  /// and throws StoreError (NoRoom).
  void makeRoom(std::int64_t bytes, std::int64_t budget, IsKept isKept);

  /// Deletes part files, except those kept, and unfinished replacements of the store's own files.
  void dropUnfinished(const std::set<std::string>& keptParts = {});

 private:
  struct Record {
    std::int64_t size = 0;
    std::int64_t used = 0;  // Nanoseconds since the Unix epoch.
  };

  void ensureLoaded();
  void set(const std::string& name, Record record);
  void forget(const std::string& name);
  bool changeContent(const std::string& name, FunctionRef<bool()> change);
  std::int64_t touch(const std::string& name);

  IDirectory& root_;
  ExtraBytes extras_;
  bool isLoaded_ = false;
  std::map<std::string, Record> records_;
  std::set<std::pair<std::int64_t, std::string>> byUse_;
  std::int64_t total_ = 0;
  std::int64_t newest_ = 0;
};

}  // namespace zentrel::vistabase::ardelivery
