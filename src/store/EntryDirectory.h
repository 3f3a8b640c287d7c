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

/// The entries of a root: their sizes and the order of their use, which are read once and kept,
/// since a root has one owner. The order lasts in the dates of the files. Under the root's lock.
///
/// Parts that a FileStore keeps to be resumed count as entries, so that room is made of them too.
class EntryDirectory {
 public:
  using IsKept = FunctionRef<bool(const std::string& name)>;

  explicit EntryDirectory(IDirectory& root) noexcept : root_(root), extras_(root) {}

  /// Reads sizes and order from the disk. Without it, that is done when they are first needed.
  void reload();

  /// Bytes of all entries.
  std::int64_t total();
  /// Bytes of one; 0 if there is none.
  std::int64_t size(const std::string& name);
  /// The names of all entries.
  std::vector<std::string> names();
  ExtraBytes& extras() noexcept { return extras_; }

  /// Whether there is such an entry, which then becomes the last one used.
  bool use(const std::string& name);
  /// Looks at the disk: what lies there has become an entry, has another size or is gone.
  void measure(const std::string& name);

  /// Makes a file of the root the entry that was used last, in place of an earlier one and of its
  /// extra bytes. Lasts once the root is synced.
  void place(const std::string& part, const std::string& name);

  /// Deletes an entry and its extra bytes. False if there is none.
  bool drop(const std::string& name);

  /// Entries of `bytes` together, or all if that is more, but for those that are kept; those not
  /// used for longest come first.
  std::vector<std::string> oldest(std::int64_t bytes, IsKept isKept);
  /// Deletes such entries until `bytes` more fit the budget. If that cannot be, throws StoreError
  /// as NoRoom, and deletes nothing.
  void makeRoom(std::int64_t bytes, std::int64_t budget, IsKept isKept);

  /// Deletes parts, but for those that are kept, and what was to replace an own file.
  void dropUnfinished(const std::set<std::string>& keptParts = {});

 private:
  struct Record {
    std::int64_t size = 0;
    std::int64_t used = 0;  // Nanoseconds since the Unix epoch.
  };

  void ensureLoaded();
  void set(const std::string& name, Record record);
  void forget(const std::string& name);
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
