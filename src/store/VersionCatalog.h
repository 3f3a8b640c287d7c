#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "store/EntryDirectory.h"
#include "store/ModelStore.h"
#include "store/StoreRoot.h"
#include "store/VersionTable.h"

namespace zentrel::vistabase::ardelivery {

/// Changes the table of versions, its index and the files that depend on it. Under the root's lock,
/// except for `snapshot`.
///
/// The table on disk decides. Whatever fails, memory is read from it again before the call returns,
/// so that the next call and the next store agree.
class VersionCatalog {
 public:
  /// Told of each new snapshot, before files go that an earlier one had.
  using Observer = std::function<void(const Snapshot&)>;

  VersionCatalog(StoreRoot& root, EntryDirectory& entries, const Capability& capability,
                 Observer observer);

  /// Reads the table, and mends what is not as it should be, as far as the disk allows. Throws
  /// StoreError if it cannot be told whether files are there.
  void load();

  const VersionTable& table() const noexcept { return table_; }
  /// Any thread.
  std::shared_ptr<const Snapshot> snapshot() const;

  /// Throws StoreError as Damaged if the version has lost or damaged files.
  void requireWhole(const Version& version);
  /// Throws StoreError as NoRoom if a table with the version would be too large.
  void requireTableSpace(const std::shared_ptr<const Version>& version) const;

  /// Adds a version, in place of an earlier one of its number, as the last one.
  void put(const std::shared_ptr<const Version>& version, bool isActive);
  void deactivate();
  /// Deletes versions with their files, but for those that others share or that are kept.
  void remove(const Versions& gone, const std::set<std::string>& kept);
  /// Remembers which files have wrong bytes.
  void setDamaged(const std::set<std::string>& names);

  /// Has `added` bytes of entries more fit the budget, and the disk `written` more: the oldest
  /// inactive versions go, then entries of no version, but none that is kept. Throws StoreError as
  /// NoRoom or DiskFull if that is not enough, and then deletes nothing.
  void makeRoom(std::int64_t added, std::int64_t written, const std::set<std::string>& kept,
                Room room);

 private:
  struct Plan {
    Versions versions = {};
    std::vector<std::string> entries = {};
    std::int64_t bytes = 0;
  };

  bool isWhole(const Version& version);
  bool dropIncomplete();
  bool isIndexCurrent();
  void write(const VersionTable& next);
  void writeIndex(const std::string& text) noexcept;
  void resync() noexcept;
  void settle();
  Plan planRoom(std::int64_t lacking, const std::set<std::string>& kept, Room room);
  std::int64_t sizeOf(const std::set<std::string>& names);
  void publish();

  StoreRoot& root_;
  EntryDirectory& entries_;
  VersionTable table_;
  std::optional<std::uint32_t> indexCrc_;  // None for as long as the index is not the store's.
  bool isIndexStale_ = false;
  bool isUncertain_ = false;  // After a failure, a power cut may bring another table back.

  const Observer observer_;
  mutable std::mutex snapshotMutex_;
  std::shared_ptr<const Snapshot> snapshot_;
};

}  // namespace zentrel::vistabase::ardelivery
