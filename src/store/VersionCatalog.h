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
#include "store/planRoom.h"

namespace zentrel::vistabase::ardelivery {

/// Maintains the table of versions, its index and the files that they refer to. Requires the root's
/// lock, except for `snapshot`.
///
/// The table on disk is authoritative. After any failure it is reread before the call returns, so
/// that the next call and the next store agree.
class VersionCatalog {
 public:
  /// Receives each new snapshot, before files that only an earlier one had are deleted.
  using Observer = std::function<void(const Snapshot&)>;

  VersionCatalog(StoreRoot& root, EntryDirectory& entries, const Capability& capability,
                 Observer observer);

  /// Reads the table, and repairs it as far as the disk allows. Throws StoreError if it cannot
  /// determine whether files exist.
  void load();

  const VersionTable& table() const noexcept { return table_; }
  /// Thread-safe.
  std::shared_ptr<const Snapshot> snapshot() const;

  /// Throws StoreError (Damaged) if the version has lost or damaged files.
  void requireWhole(const Version& version);
  /// Throws StoreError (NoRoom) if a table with the version would be too large.
  void requireTableSpace(const std::shared_ptr<const Version>& version) const;

  /// Adds a version at the end, replacing an earlier one with its number.
  void put(const std::shared_ptr<const Version>& version, bool isActive);
  void deactivate();
  /// Deletes versions and their files, except those that other versions share or that are kept.
  void remove(const Versions& removed, const std::set<std::string>& kept);
  /// Records which files have wrong bytes.
  void setDamaged(const std::set<std::string>& names);

  /// Makes room for `added` more bytes of entries in the budget and `written` more on the disk:
  /// deletes the oldest inactive versions, then entries of no version, but none that is kept. If
  /// that is not enough, deletes nothing and throws StoreError (NoRoom or DiskFull).
  void makeRoom(std::int64_t added, std::int64_t written, const std::set<std::string>& kept,
                Room room);

 private:
  bool isWhole(const Version& version);
  bool dropIncomplete();
  bool isIndexCurrent();
  void write(const VersionTable& next);
  void writeIndex(const std::string& text) noexcept;
  void reread() noexcept;
  void ensureDurable();
  void carryOut(const RoomPlan& plan, const std::set<std::string>& kept);
  void publish();

  StoreRoot& root_;
  EntryDirectory& entries_;
  VersionTable table_;
  std::optional<std::uint32_t> indexCrc_;  // Unset until the store has written an index.
  bool isIndexStale_ = false;
  bool mayRevert_ = false;  // After a failure, a power cut may bring back another table.

  const Observer observer_;
  mutable std::mutex snapshotMutex_;
  std::shared_ptr<const Snapshot> snapshot_;
};

}  // namespace zentrel::vistabase::ardelivery
