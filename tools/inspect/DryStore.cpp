#include "tools/inspect/DryStore.h"

#include <algorithm>
#include <utility>

#include "delivery/FileNames.h"
#include "store/OpenSslDigest.h"
#include "store/PosixDisk.h"
#include "store/VersionTableFile.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

using Names = std::vector<std::string>;

class DryFile final : public IFile {
 public:
  std::size_t read(void* /*bytes*/, std::size_t /*count*/) override { return 0; }
  void append(const void* /*bytes*/, std::size_t /*count*/) override {}
  void truncate() override {}
  void sync() override {}
  FileStatus status() override { return {}; }
};

/// Notes which names would be deleted or written. Reading shows the disk as it is: a store relies
/// on its own memory for what it has changed.
class DryDirectory final : public IDirectory {
 public:
  DryDirectory(std::shared_ptr<IDirectory> real, Names& deleted, Names& told)
      : real_(std::move(real)), deleted_(deleted), told_(told) {}

  std::unique_ptr<IFile> openForReading(const std::string& name) override {
    return real_->openForReading(name);
  }
  std::unique_ptr<IFile> openForAppending(const std::string& name) override { return create(name); }
  std::unique_ptr<IFile> create(const std::string& /*name*/) override {
    return std::make_unique<DryFile>();
  }
  std::unique_ptr<IDirectory> openDirectory(const std::string& name) override {
    return std::make_unique<DryDirectory>(real_->openDirectory(name), below_, below_);
  }
  void makeDirectory(const std::string& /*name*/) override {}
  void rename(const std::string& /*from*/, IDirectory& to, const std::string& name) override {
    static_cast<DryDirectory&>(to).told_.push_back("would write " + printable(name));
  }
  bool remove(const std::string& name) override {
    removeDirectory(name);
    return true;
  }
  void removeDirectory(const std::string& name) override { deleted_.push_back(name); }
  void touch(const std::string& /*name*/, std::int64_t /*modified*/) override {}
  void sync() override {}
  FileStatus status(const std::string& name) override { return real_->status(name); }
  FileStatus status() override { return real_->status(); }
  Names list() override { return real_->list(); }
  std::int64_t freeBytes() override { return real_->freeBytes(); }
  bool tryLock() override { return true; }
  void unlock() noexcept override {}

 private:
  const std::shared_ptr<IDirectory> real_;
  Names& deleted_;
  Names& told_;
  Names below_;  // Notes about subdirectories, which are dropped.
};

std::shared_ptr<StoreRoot> openDryRoot(const std::string& path, Names& deleted, Names& told) {
  const OpenRoot open = [&](const std::string& root) {
    return std::make_shared<DryDirectory>(openPosixDirectory(root), deleted, told);
  };
  return std::make_shared<StoreRoot>(path, INT64_MAX, StoreEnvironment{open, &newOpenSslDigest});
}

}  // namespace

DryStore::DryStore(const std::string& path)
    : sink_(nullptr, [earlier = softerror::setSink({&receive, this})](
                         void* /*none*/) { softerror::setSink(earlier); }),
      root_(openDryRoot(path, deleted_, told_)),
      files_(root_->directory()) {
  content = root_->findContent();
  isStore = content.has_value();
  opened.capability = content ? content->capability : std::nullopt;
  for (const Capability& known : {Capability::faceTracking(), Capability::segmentation()}) {
    if (content && !content->types.empty() && content->isCompatibleWith({known})) {
      opened.capability = known;
    }
  }
  if (content && !content->types.empty() && !opened.capability) {
    content.reset();
  }
  root_->readOwnFile(kTableName, [this] {
    if (const auto stored = VersionTableFile::read(root_->directory())) {
      table = stored->table;
    }
  });
}

void DryStore::receive(const softerror::Report& report, void* self) {
  auto& store = *static_cast<DryStore*>(self);
  const std::string prefix = store.root_->path() + ": ";
  const std::string message = report.message;
  store.told_.push_back("would report: " +
                        printable(message.substr(beginsWith(message, prefix) ? prefix.size() : 0)));
}

std::vector<std::string> DryStore::open() {
  told_.clear();
  deleted_.clear();
  root_->claim(opened);
  if (opened.capability) {
    models = std::make_shared<ModelStoreState>(root_, *opened.capability, [](const Snapshot&) {});
    models->catalog.load();
    store = std::make_unique<DiskModelStore>(models);
  } else {
    files_.dropUnfinished();
  }
  for (const std::string& name : std::exchange(deleted_, {})) {
    if (name != kLockName) {
      told_.push_back("would delete " + printable(name));
    }
  }
  return told_;
}

std::vector<std::string> DryStore::makeRoom(std::int64_t bytes, std::int64_t budget) {
  root_->setMaxSizeBytes(budget);
  if (models) {
    models->catalog.makeRoom(bytes, bytes, {}, Room::KeepActive);
  } else {
    files_.makeRoom(bytes, budget, [](const std::string&) { return false; });
  }
  return std::exchange(deleted_, {});
}

}  // namespace zentrel::vistabase::ardelivery::inspect
