#include "store/VersionUpdate.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "delivery/FileNames.h"
#include "store/PartWriter.h"
#include "store/adoptFiles.h"
#include "store/fileTrees.h"
#include "store/noRoom.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {
namespace {

std::string partOf(const std::string& name) {
  return std::string(kPartPrefix) + name;
}

/// Throws StoreError (NoRoom) if a version and the active one together exceed the budget.
void requireBudget(const Version& version, const Version* active, StoreRoot& root) {
  const std::int64_t budget = root.maxSizeBytes();
  const std::int64_t alone = version.bytes();
  const std::int64_t together = version.bytes(active);
  if (together > budget) {
    throw noRoom(
        joined("version ", version.number, " has ", alone, " bytes",
               active == nullptr
                   ? ""
                   : joined(", ", together, " together with the active version ", active->number),
               ", but the budget is ", budget),
        {}, root.directory(), together, budget);
  }
}

}  // namespace

void VersionUpdate::begin(int number, const std::vector<ModelFile>& files, Room room) {
  const auto [found, missing] = plan(number, files, room);
  const std::vector<Adoption> adoptions = matchFiles(  // Without the lock.
      store_->root->directory(), found, missing, [this] { return store_->root->newDigest(); },
      [this] { requireRunning(); });
  prepare(adoptions, room);
}

/// Determines which files are missing. Returns the candidates for reuse, and the missing files.
std::pair<std::vector<FoundFile>, FilesByName> VersionUpdate::plan(
    int number, const std::vector<ModelFile>& files, Room room) {
  const auto lock = store_->root->lockForChange();
  if (const auto running = store_->runningUpdate()) {
    throw UsageError(joined("an update to version ", running->number(), " is running"));
  }
  VersionCatalog& catalog = store_->catalog;
  const VersionTable& table = catalog.table();
  version_ = std::make_shared<const Version>(table.plan(number, files));
  catalog.requireTableSpace(version_);
  const auto active = room == Room::KeepActive ? table.activeVersion() : nullptr;
  requireBudget(*version_, active.get(), *store_->root);
  const std::set<std::string> named = table.namesWithout({});
  std::set<std::int64_t> sizes;
  for (const auto& [type, name] : version_->files) {
    const FileStatus status = store_->root->directory().status(name);
    const bool isTrusted = named.count(name) != 0 && table.damaged.count(name) == 0;
    if (isTrusted && status.isRegular() && status.size == type.sizeBytes()) {
      present_.insert(name);
    } else {
      sizes.insert(type.sizeBytes());
    }
  }
  store_->update = weak_from_this();
  return {findFiles(store_->root->directory(), sizes, named), missingByName()};
}

/// Adopts files with the right content, and makes room for the rest.
void VersionUpdate::prepare(const std::vector<Adoption>& adoptions, Room room) {
  const auto lock = store_->root->lockForChange();
  requireRunning();
  IDirectory& directory = store_->root->directory();
  for (const Adoption& adoption : adoptions) {
    adopt(adoption);
  }
  store_->entries.dropUnfinished(parts());
  std::int64_t added = 0;
  std::int64_t replaced = 0;
  std::int64_t written = 0;
  std::set<std::string> absent;
  for (const auto& [name, file] : missingByName()) {
    const FileStatus part = directory.status(partOf(name));
    const bool isUsable = part.isOwn() && part.size < file.sizeBytes();
    if (!isUsable) {
      if (!part.isAbsent()) {
        removeTree(directory, partOf(name));
        store_->root->report("dropped a part with wrong bytes: " + partOf(name));
      }
      absent.insert(partOf(name));
    }
    store_->entries.measure(name);
    added = addSizes(added, file.sizeBytes());
    replaced = addSizes(replaced, store_->entries.size(name));
    written = addSizes(written, file.sizeBytes() - (isUsable ? part.size : 0));
  }
  store_->catalog.makeRoom(added - replaced, written, names(), room);
  for (const std::string& part : absent) {
    directory.create(part);
  }
  if (!missingByName().empty()) {
    directory.sync();  // From now on the names of all parts are durable, old ones included.
  }
  recordIfComplete({});
}

void VersionUpdate::adopt(const Adoption& adoption) {
  const std::string& found = adoption.file.path.front();
  if (adoptFile(store_->root->directory(), adoption)) {
    store_->entries.measure(found);
    store_->entries.measure(adoption.name);
    markPresent(adoption.name);
  }
}

/// Notes that a file has the right bytes.
void VersionUpdate::markPresent(const std::string& name) {
  std::set<std::string> damaged = store_->catalog.table().damaged;
  if (damaged.erase(name) != 0) {
    store_->catalog.setDamaged(damaged);
  }
  present_.insert(name);
}

std::vector<ModelFile> VersionUpdate::missing() {
  const auto lock = store_->root->lock();
  requireRunning();
  std::vector<ModelFile> files;
  std::set<std::string> listed;
  for (const auto& [file, name] : version_->files) {
    if (present_.count(name) == 0 && listed.insert(name).second) {
      files.push_back(file);
    }
  }
  return files;
}

std::unique_ptr<ModelWriter> VersionUpdate::write(const ModelFile& file) {
  std::unique_ptr<PartHandle> writer;
  {
    const auto lock = store_->root->lockForChange();
    requireRunning();
    const auto& files = version_->files;
    const auto found = std::find_if(files.begin(), files.end(),
                                    [&file](const VersionFile& each) { return each.file == file; });
    if (found == files.end() || present_.count(found->name) != 0) {
      throw std::invalid_argument("not missing: " + file.toString());
    }
    const std::string& name = found->name;
    PartPlan plan{shared_from_this(), name, partOf(name),
                  ExpectedContent{file.type(), file.sizeBytes(), file.sha256()}, true};
    writer = std::make_unique<PartHandle>(store_->root, std::move(plan));
  }
  writer->resume();
  return writer;
}

void VersionUpdate::place(const PartPlan& part, std::int64_t bytes) {
  const std::string& name = part.entry;
  const auto lock = store_->root->lockForChange();
  requireRunning();
  VersionCatalog& catalog = store_->catalog;
  store_->entries.measure(name);
  catalog.makeRoom(bytes - store_->entries.size(name), 0, names(), Room::KeepActive);
  store_->entries.place(part.part, name);
  markPresent(name);
  recordIfComplete(name);
}

/// Adds the version to the table once all files are present, unless it replaces another.
void VersionUpdate::recordIfComplete(const std::string& lastName) {
  VersionCatalog& catalog = store_->catalog;
  const std::set<std::string> names = version_->names();
  if (!std::includes(present_.begin(), present_.end(), names.begin(), names.end()) ||
      catalog.table().find(version_->number)) {
    return;
  }
  try {
    catalog.put(version_, false);
  } catch (...) {
    const bool isShared = catalog.table().namesWithout({}).count(lastName) != 0;
    if (!lastName.empty() && !isShared) {  // Undo the commit.
      present_.erase(lastName);
      try {
        IDirectory& directory = store_->root->directory();
        directory.rename(lastName, directory, partOf(lastName));
        store_->entries.measure(lastName);
      } catch (const StoreError& error) {
        store_->root->report(error.what());  // The next update finds it in place.
      }
    }
    throw;
  }
}

void VersionUpdate::activate() {
  {
    const auto lock = store_->root->lockForChange();
    requireRunning();
    const FilesByName missing = missingByName();
    if (!missing.empty()) {
      throw UsageError("still missing: " + missing.begin()->second.toString() +
                       (missing.size() == 1 ? "" : " and others"));
    }
    store_->catalog.requireWhole(*version_);
    store_->catalog.put(version_, true);
  }
  end();
}

std::int64_t VersionUpdate::totalBytes() {
  const auto lock = store_->root->lock();
  requireRunning();
  return version_->bytes();
}

std::int64_t VersionUpdate::remainingBytes() {
  const auto lock = store_->root->lock();
  requireRunning();
  std::int64_t sum = 0;
  for (const auto& [name, file] : missingByName()) {
    const FileStatus part = store_->root->directory().status(partOf(name));
    const std::int64_t written = part.isOwn() ? std::min(part.size, file.sizeBytes()) : 0;
    sum = addSizes(sum, file.sizeBytes() - written);
  }
  return sum;
}

void VersionUpdate::end() noexcept {
  if (hasEnded_.exchange(true)) {
    return;
  }
  StoreRoot& root = *store_->root;
  {
    const auto lock = root.lockEvenIfClosed();
    if (store_->runningUpdate().get() != this) {
      return;
    }
  }
  root.writers().closeAll();  // While no other update can have writers.
  const auto lock = root.lockEvenIfClosed();
  store_->update.reset();
}

std::set<std::string> VersionUpdate::parts() const {
  std::set<std::string> parts;
  for (const auto& [name, file] : missingByName()) {
    parts.insert(partOf(name));
  }
  return parts;
}

void VersionUpdate::markMissing(const std::set<std::string>& names) {
  for (const std::string& name : names) {
    present_.erase(name);
  }
}

void VersionUpdate::requireRunning() const {
  store_->root->requireOpen();
  if (isCancelled_) {
    throw CancelledError("the update was cancelled");
  }
  if (hasEnded_) {
    throw UsageError("the update has ended");
  }
}

FilesByName VersionUpdate::missingByName() const {
  FilesByName missing;
  for (const auto& [file, name] : version_->files) {
    if (present_.count(name) == 0) {
      missing.emplace(name, file);
    }
  }
  return missing;
}

}  // namespace zentrel::vistabase::ardelivery
