#include "store/DiskModelStore.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

#include "delivery/FileNames.h"
#include "store/PartWriter.h"
#include "store/VersionIndex.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {
namespace {

/// The caller's handle to an update, which it ends when destroyed.
class UpdateHandle final : public Update {
 public:
  UpdateHandle(std::shared_ptr<StoreRoot> root, std::shared_ptr<VersionUpdate> update)
      : root_(std::move(root)), update_(std::move(update)) {}
  UpdateHandle(const UpdateHandle&) = delete;
  UpdateHandle& operator=(const UpdateHandle&) = delete;
  ~UpdateHandle() override {
    const StoreCall call(*root_, std::nothrow);
    update_->end();
  }

  std::vector<ModelFile> missing() override {
    const StoreCall call(*root_);
    return update_->missing();
  }
  std::unique_ptr<ModelWriter> write(const ModelFile& file) override {
    const StoreCall call(*root_);
    return update_->write(file);
  }
  void activate() override {
    const StoreCall call(*root_);
    update_->activate();
  }
  std::int64_t totalBytes() override {
    const StoreCall call(*root_);
    return update_->totalBytes();
  }
  std::int64_t remainingBytes() override {
    const StoreCall call(*root_);
    return update_->remainingBytes();
  }
  void cancel() noexcept override { update_->cancel(); }
  void close() override {
    const StoreCall call(*root_);
    update_->end();
  }

 private:
  const std::shared_ptr<StoreRoot> root_;
  const std::shared_ptr<VersionUpdate> update_;
};

/// A file, and its status when verify first looked at it.
struct Suspect {
  ModelFile file;
  FileStatus status;
};

/// Whether a file still has the right bytes. An unreadable one has not.
bool isIntact(StoreRoot& root, const std::string& name, const Suspect& expected) {
  if (!expected.status.isRegular() || expected.status.size != expected.file.sizeBytes()) {
    return false;
  }
  try {
    const auto digest = root.newDigest();
    digestFile(*root.directory().openForReading(name), *digest, [&root] { root.requireOpen(); });
    return digest->finish() == expected.file.sha256();
  } catch (const StoreError& error) {
    if (error.error() != EIO && error.error() != ENOENT) {
      throw;
    }
    return false;
  }
}

}  // namespace

std::unique_ptr<ModelStore> DiskModelStore::open(const std::string& root,
                                                 const Capability& capability,
                                                 std::int64_t maxSizeBytes,
                                                 const StoreEnvironment& environment,
                                                 VersionCatalog::Observer observer) {
  const auto opened = std::make_shared<StoreRoot>(root, maxSizeBytes, environment);
  const StoreCall call(*opened);
  opened->claim(RootContent{capability});
  const auto state = std::make_shared<ModelStoreState>(opened, capability, std::move(observer));
  state->catalog.load();
  return std::make_unique<DiskModelStore>(state);
}

DiskModelStore::~DiskModelStore() {
  const StoreCall call(*state_->root, std::nothrow);
  state_->root->close();
}

std::shared_ptr<const Snapshot> DiskModelStore::snapshot() {
  state_->root->requireOpen();
  return state_->catalog.snapshot();
}

std::unique_ptr<Update> DiskModelStore::begin(int version, const std::vector<ModelFile>& files,
                                              Room room) {
  const StoreCall call(*state_->root);
  const auto update = std::make_shared<VersionUpdate>(state_);
  update->begin(version, files, room);
  return std::make_unique<UpdateHandle>(state_->root, update);
}

void DiskModelStore::activate(int version) {
  const StoreCall call(*state_->root);
  const auto lock = state_->root->lockForChange();
  VersionCatalog& catalog = state_->catalog;
  const auto found = find(version);
  catalog.requireWhole(*found);
  if (found != catalog.table().activeVersion()) {
    catalog.put(found, true);
  }
}

void DiskModelStore::deactivate() {
  const StoreCall call(*state_->root);
  const auto lock = state_->root->lockForChange();
  state_->catalog.deactivate();
}

void DiskModelStore::trimExcept(const std::vector<int>& versions) {
  const StoreCall call(*state_->root);
  const auto lock = state_->root->lockForChange();
  VersionCatalog& catalog = state_->catalog;
  const auto update = state_->runningUpdate();
  state_->entries.dropUnfinished(update ? update->parts() : std::set<std::string>());
  Versions removed;
  for (const auto& version : catalog.table().versions) {
    if (version->number != catalog.table().active &&
        std::find(versions.begin(), versions.end(), version->number) == versions.end()) {
      removed.push_back(version);
    }
  }
  if (!removed.empty() && removed.size() < catalog.table().versions.size()) {
    catalog.remove(removed, update ? update->names() : std::set<std::string>());
  }
  dropStrays();
}

/// Deletes files that were committed for a version that was never completed.
void DiskModelStore::dropStrays() {
  const auto update = state_->runningUpdate();
  std::set<std::string> kept = state_->catalog.table().namesWithout({});
  kept.merge(update ? update->names() : std::set<std::string>());
  for (const std::string& name : state_->entries.names()) {
    if (isModelFileName(name) && kept.count(name) == 0) {
      state_->entries.drop(name);
    }
  }
}

std::vector<ModelFile> DiskModelStore::verify() {
  const StoreCall call(*state_->root);
  StoreRoot& root = *state_->root;
  std::map<std::string, Suspect> files;
  {
    const auto lock = root.lock();
    for (const auto& [name, file] : state_->catalog.table().filesByName()) {
      files.emplace(name, Suspect{file, root.directory().status(name)});
    }
  }
  for (auto each = files.begin(); each != files.end();) {
    each = isIntact(root, each->first, each->second) ? files.erase(each) : std::next(each);
  }
  const auto lock = root.lock();
  const std::set<std::string> named = state_->catalog.table().namesWithout({});
  std::set<std::string> damaged;
  std::vector<ModelFile> result;
  for (const auto& [name, suspect] : files) {
    // A file that has changed since was committed again, and checked then.
    if (named.count(name) != 0 && root.directory().status(name).isUnchangedSince(suspect.status)) {
      damaged.insert(name);
      result.push_back(suspect.file);
    }
  }
  if (const auto update = state_->runningUpdate()) {
    update->markMissing(damaged);
  }
  state_->catalog.setDamaged(damaged);
  return result;
}

std::vector<StoredModelFile> DiskModelStore::files(int version) {
  const StoreCall call(*state_->root);
  const auto lock = state_->root->lock();
  std::vector<StoredModelFile> files;
  const auto found = find(version);
  for (const VersionFile& file : found->files) {
    files.push_back({file.file, state_->root->pathOf(file.name)});
  }
  return files;
}

std::int64_t DiskModelStore::sizeBytes() {
  const StoreCall call(*state_->root);
  const auto lock = state_->root->lock();
  state_->entries.reload();
  return state_->entries.total();
}

void DiskModelStore::setMaxSizeBytes(std::int64_t bytes) {
  const StoreCall call(*state_->root);
  state_->root->requireOpen();
  state_->root->setMaxSizeBytes(bytes);
}

void DiskModelStore::close() {
  const StoreCall call(*state_->root);
  if (const auto update = [this] {
        const auto lock = state_->root->lockEvenIfClosed();
        return state_->runningUpdate();
      }()) {
    update->cancel();  // Calls in progress stop at their next checkpoint.
  }
  state_->root->close();
}

std::shared_ptr<const Version> DiskModelStore::find(int version) const {
  auto found = state_->catalog.table().find(version);
  if (!found) {
    throw std::invalid_argument(joined("no complete version ", version));
  }
  return found;
}

}  // namespace zentrel::vistabase::ardelivery
