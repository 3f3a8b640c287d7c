#include "store/VersionCatalog.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "delivery/FileNames.h"
#include "store/CheckedDocument.h"
#include "store/VersionIndex.h"
#include "store/VersionTableFile.h"
#include "store/fileTrees.h"
#include "store/noRoom.h"
#include "store/recoverVersions.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {

VersionCatalog::VersionCatalog(StoreRoot& root, EntryDirectory& entries,
                               const Capability& capability, Observer observer)
    : root_(root), entries_(entries), table_{capability}, observer_(std::move(observer)) {}

void VersionCatalog::load() {
  std::optional<StoredTable> stored;
  bool isRepaired =
      !root_.readOwnFile(kTableName, [&] { stored = VersionTableFile::read(root_.directory()); });
  if (stored && stored->table.capability == table_.capability) {
    table_ = stored->table;
    indexCrc_ = stored->indexCrc;
  } else {
    table_ = recoverVersions(root_, table_.capability);
    isRepaired = isRepaired || stored || !table_.versions.empty();
  }
  isRepaired = dropIncomplete() || isRepaired;
  if (!isRepaired && !isIndexCurrent()) {
    root_.report("rewriting the index, which is not the store's");
    writeIndex(printIndex(table_));
  }
  if (isRepaired) {
    try {
      write(VersionTable(table_));
    } catch (const StoreError& error) {
      root_.report(error.what());  // The next store repairs it.
    }
  }
  publish();
}

std::shared_ptr<const Snapshot> VersionCatalog::snapshot() const {
  const std::lock_guard<std::mutex> guard(snapshotMutex_);
  return snapshot_;
}

/// Checks that every file exists with its size, but not the bytes.
bool VersionCatalog::isWhole(const Version& version) {
  const auto& files = version.files;
  return std::all_of(files.begin(), files.end(), [this](const VersionFile& file) {
    const FileStatus status = root_.directory().status(file.name);
    return status.isRegular() && status.size == file.file.sizeBytes();
  });
}

bool VersionCatalog::dropIncomplete() {
  Versions incomplete;
  for (const auto& version : table_.versions) {
    std::vector<std::string> types;
    for (const VersionFile& file : version->files) {
      types.push_back(file.file.type());
    }
    if (types != table_.capability.types() || !isWhole(*version)) {
      incomplete.push_back(version);
    }
  }
  if (!incomplete.empty()) {
    const std::size_t others = incomplete.size() - 1;
    root_.report(joined("dropped version ", incomplete.front()->number,
                        others == 0 ? "" : joined(" and ", others, " more"),
                        ": lost files, or other types"));
    table_ = table_.without(incomplete);
  }
  return !incomplete.empty();
}

bool VersionCatalog::isIndexCurrent() {
  if (!indexCrc_) {
    return true;
  }
  bool isCurrent = false;
  root_.readOwnFile(kIndexName, [&] {
    const auto text = readSmallFile(root_.directory(), kIndexName);
    isCurrent = text && crc32(*text) == *indexCrc_;
  });
  return isCurrent;
}

void VersionCatalog::requireWhole(const Version& version) {
  const std::set<std::string> names = version.names();
  const bool isDamaged = std::any_of(names.begin(), names.end(), [this](const std::string& name) {
    return table_.damaged.count(name) != 0;
  });
  if (isDamaged || !isWhole(version)) {
    throw StoreError(StoreError::Reason::Damaged,
                     joined("version ", version.number, " has lost or damaged files"),
                     root_.path());
  }
}

void VersionCatalog::requireTableSpace(const std::shared_ptr<const Version>& version) const {
  VersionTableFile::print({table_.with(version, true), 0});
}

void VersionCatalog::put(const std::shared_ptr<const Version>& version, bool isActive) {
  const std::set<std::string> known = table_.namesWithout({});
  const std::set<std::string> names = version->names();
  if (!std::includes(known.begin(), known.end(), names.begin(), names.end())) {
    root_.directory().sync();  // A table may only name durable files.
  }
  write(table_.with(version, isActive));
}

void VersionCatalog::deactivate() {
  if (table_.active) {
    write(table_.withActive(std::nullopt));
  }
}

/// Deletes the files first, which makes room for the new table on a full disk.
void VersionCatalog::remove(const Versions& removed, const std::set<std::string>& kept) {
  ensureDurable();
  const std::set<std::string> names = table_.namesOnlyOf(removed, kept);
  const VersionTable next = table_.without(removed);
  if (next.active != table_.active) {
    table_ = next;  // Never hand out paths of deleted files.
    publish();
  }
  try {
    for (const std::string& name : names) {
      entries_.drop(name);
    }
  } catch (...) {
    reread();
    throw;
  }
  write(next);
}

void VersionCatalog::setDamaged(const std::set<std::string>& names) {
  const VersionTable next = table_.withDamaged(names);
  if (next.damaged == table_.damaged) {
    return;
  }
  try {
    root_.ensureMarked();
    write(next);
  } catch (const StoreError& error) {
    root_.report(error.what());
    table_ = table_.withDamaged(names);  // Remembered only while the store is open.
  }
}

void VersionCatalog::carryOut(const RoomPlan& plan, const std::set<std::string>& kept) {
  if (!plan.versions.empty()) {
    remove(plan.versions, kept);
  }
  for (const std::string& name : plan.entries) {
    entries_.drop(name);
  }
}

void VersionCatalog::makeRoom(std::int64_t added, std::int64_t written,
                              const std::set<std::string>& kept, Room room) {
  for (const bool isLastTry : {false, true}) {
    const std::int64_t budget = root_.maxSizeBytes();
    const std::int64_t free = written > 0 ? root_.directory().freeBytes() : -1;
    const std::int64_t total = entries_.total();
    const std::int64_t overBudget = (added < 0 ? total + added : addSizes(total, added)) - budget;
    const std::int64_t overDisk = free < 0 ? 0 : written - free;
    const RoomPlan plan = planRoom(table_, entries_, std::max(overBudget, overDisk), kept, room);
    if (plan.bytes >= std::max(overBudget, overDisk)) {
      carryOut(plan, kept);
      return;
    }
    if (isLastTry) {
      const bool isBudget = plan.bytes < overBudget;
      const std::string message =
          joined("no room for ", isBudget ? added : written, " more bytes in ", root_.path(), ": ",
                 isBudget ? joined(total, " of the budget of ", budget, " are used")
                          : joined(free, " are free on the disk"),
                 ", and ", plan.bytes, " can be deleted");
      if (isBudget) {
        throw noRoom(message, root_.path(), root_.directory(), budget + overBudget - plan.bytes,
                     budget);
      }
      throw StoreError(StoreError::Reason::DiskFull, message, root_.path(), 0,
                       StoreError::Room{written - plan.bytes, budget, free});
    }
    entries_.reload();  // Someone may have deleted files behind our back.
  }
}

/// Makes the in-memory table durable, before deleting files that an earlier one may still name.
void VersionCatalog::ensureDurable() {
  if (mayRevert_) {
    write(VersionTable(table_));
  }
}

/// The rename of the table is the commit. The index follows.
void VersionCatalog::write(const VersionTable& next) {
  const bool hasIndex = indexCrc_ || !next.versions.empty();
  const std::string index = hasIndex ? printIndex(next) : "";
  const auto sum = hasIndex ? std::optional(crc32(index)) : std::nullopt;
  try {
    VersionTableFile::write(root_.directory(), {next, sum});
  } catch (...) {
    reread();
    throw;
  }
  mayRevert_ = false;
  isIndexStale_ = isIndexStale_ || sum != indexCrc_;
  table_ = next;
  indexCrc_ = sum;
  publish();
  if (hasIndex && isIndexStale_) {
    writeIndex(index);
  }
}

/// Best effort, since only raw readers and the recovery of a lost table need the index.
void VersionCatalog::writeIndex(const std::string& text) noexcept {
  try {
    replaceFile(root_.directory(), kIndexName, text, Durability::Unsynced);
    isIndexStale_ = false;
  } catch (const std::exception& error) {
    root_.report(error.what());
  }
}

/// Recovers from a failure by adopting whatever table is on disk.
void VersionCatalog::reread() noexcept {
  mayRevert_ = true;
  isIndexStale_ = true;
  try {
    const auto stored = VersionTableFile::read(root_.directory());
    if (stored) {  // Otherwise memory is the only copy that there is.
      table_ = stored->table.withDamaged(table_.damaged);
      indexCrc_ = stored->indexCrc;
    }
    try {
      dropIncomplete();
    } catch (const StoreError& error) {
      root_.report(error.what());  // A file counts as lost only if that is certain.
    }
    publish();
  } catch (const std::exception& error) {
    root_.report(error.what());  // Keep the table in memory.
  }
}

void VersionCatalog::publish() {
  auto next = std::make_shared<Snapshot>();
  if (const auto active = table_.activeVersion()) {
    next->active = active->number;
    for (const VersionFile& file : active->files) {
      next->paths.emplace(file.file.type(), root_.pathOf(file.name));
    }
  }
  for (const auto& version : table_.versions) {
    next->versions.push_back(version->number);
  }
  std::sort(next->versions.begin(), next->versions.end());
  {
    const std::lock_guard<std::mutex> guard(snapshotMutex_);
    snapshot_ = next;
  }
  observer_(*next);
}

}  // namespace zentrel::vistabase::ardelivery
