#include "tests/store/SimulatedDisk.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

#include "store/OpenSslDigest.h"
#include "store/StoreError.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Node = SimulatedDisk::Node;
using NodePtr = std::shared_ptr<Node>;

[[noreturn]] void fail(const std::string& name, int error) {
  throw StoreError::ofSystem("simulate", name, error, true);
}

class SimulatedFile final : public IFile {
 public:
  SimulatedFile(SimulatedDisk& disk, NodePtr node, std::string name)
      : disk_(disk), node_(std::move(node)), name_(std::move(name)) {}

  std::size_t read(void* bytes, std::size_t count) override {
    disk_.hook("read", name_);
    const std::size_t done = std::min(count, node_->bytes.size() - position_);
    std::memcpy(bytes, node_->bytes.data() + position_, done);
    position_ += done;
    return done;
  }
  void append(const void* bytes, std::size_t count) override {
    disk_.noteWrite(node_);
    const std::string_view added(static_cast<const char*>(bytes), count);
    node_->bytes += added.substr(0, count / 2);
    disk_.hook("append", name_);
    node_->bytes += added.substr(count / 2);
  }
  void truncate() override {
    disk_.hook("truncate", name_);
    disk_.noteWrite(node_);
    node_->bytes.clear();
  }
  void sync() override {
    disk_.hook("sync", name_);
    disk_.syncFile(node_);
  }
  FileStatus status() override { return disk_.statusOf(*node_); }

 private:
  SimulatedDisk& disk_;
  const NodePtr node_;
  const std::string name_;
  std::size_t position_ = 0;
};

class SimulatedDirectory final : public IDirectory {
 public:
  SimulatedDirectory(SimulatedDisk& disk, NodePtr node) : disk_(disk), node_(std::move(node)) {}

  std::unique_ptr<IFile> openForReading(const std::string& name) override {
    disk_.hook("openForReading", name);
    return std::make_unique<SimulatedFile>(disk_, find(name), name);
  }
  std::unique_ptr<IFile> openForAppending(const std::string& name) override {
    disk_.hook("openForAppending", name);
    return std::make_unique<SimulatedFile>(disk_, find(name), name);
  }
  std::unique_ptr<IFile> create(const std::string& name) override {
    disk_.hook("create", name);
    if (node_->names.count(name) != 0) {
      fail(name, EEXIST);
    }
    const NodePtr node = disk_.newNode(false);
    disk_.changeNames({node, {}, {}, node_, name});
    return std::make_unique<SimulatedFile>(disk_, node, name);
  }
  std::unique_ptr<IDirectory> openDirectory(const std::string& name) override {
    disk_.hook("openDirectory", name);
    const NodePtr node = find(name);
    if (!node->isDirectory) {
      fail(name, ENOTDIR);
    }
    return std::make_unique<SimulatedDirectory>(disk_, node);
  }
  void makeDirectory(const std::string& name) override {
    disk_.hook("makeDirectory", name);
    disk_.changeNames({disk_.newNode(true), {}, {}, node_, name});
  }
  void rename(const std::string& from, IDirectory& toDirectory, const std::string& to) override {
    disk_.hook("rename", to);
    const NodePtr& target = static_cast<SimulatedDirectory&>(toDirectory).node_;
    const auto existing = target->names.find(to);
    if (existing != target->names.end() && existing->second->isDirectory) {
      fail(to, EISDIR);
    }
    disk_.changeNames({find(from), node_, from, target, to});
  }
  bool remove(const std::string& name) override {
    disk_.hook("remove", name);
    const auto found = node_->names.find(name);
    if (found == node_->names.end()) {
      return false;
    }
    disk_.changeNames({found->second, node_, name, {}, {}});
    return true;
  }
  void removeDirectory(const std::string& name) override {
    disk_.hook("removeDirectory", name);
    disk_.changeNames({find(name), node_, name, {}, {}});
  }
  void touch(const std::string& name, std::int64_t modified) override {
    disk_.hook("touch", name);
    find(name)->modified = modified - modified % disk_.granularity;
  }
  void sync() override {
    disk_.hook("syncDirectory", "");
    disk_.syncDirectory(node_);
  }
  FileStatus status(const std::string& name) override {
    disk_.hook("status", name);
    const auto found = node_->names.find(name);
    return found == node_->names.end() ? FileStatus() : disk_.statusOf(*found->second);
  }
  FileStatus status() override {
    FileStatus status = disk_.statusOf(*node_);
    status.links = disk_.isDeleted ? 0 : 1;
    return status;
  }
  std::vector<std::string> list() override {
    disk_.hook("list", "");
    std::vector<std::string> names;
    for (const auto& [name, node] : node_->names) {
      names.push_back(name);
    }
    return names;
  }
  std::int64_t freeBytes() override { return disk_.free; }
  bool tryLock() override { return !std::exchange(disk_.isLocked, true); }
  void unlock() noexcept override { disk_.isLocked = false; }

 private:
  const NodePtr& find(const std::string& name) const {
    const auto found = node_->names.find(name);
    if (found == node_->names.end()) {
      fail(name, ENOENT);
    }
    return found->second;
  }

  SimulatedDisk& disk_;
  const NodePtr node_;
};

std::atomic<std::uint64_t> devices{1};

}  // namespace

SimulatedDisk::SimulatedDisk(const Image& image) : device_(devices++), root_(newNode(true)) {
  for (const auto& [path, bytes] : image) {
    NodePtr directory = root_;
    std::string rest = path;
    for (std::size_t end; (end = rest.find('/')) != std::string::npos; rest.erase(0, end + 1)) {
      NodePtr& inside = directory->names[rest.substr(0, end)];
      inside = inside ? inside : newNode(true);
      directory->syncedNames = directory->names;
      directory = inside;
    }
    if (!rest.empty()) {
      const NodePtr file = newNode(false);
      file->bytes = file->syncedBytes = bytes;
      directory->names[rest] = directory->syncedNames[rest] = file;
    }
  }
}

StoreEnvironment SimulatedDisk::environment() {
  return {[this](auto&) { return std::make_shared<SimulatedDirectory>(*this, root_); },
          &newOpenSslDigest};
}

void SimulatedDisk::failOnce(const std::string& call, const std::string& name, int error) {
  hook = [=](std::string_view each, const std::string& on) {
    if (each == call && on == name) {
      const auto failure = StoreError::ofSystem("simulate", name, error, true);
      hook = [](auto, auto&) {};  // Nothing that was captured is left.
      throw failure;
    }
  };
}

NodePtr SimulatedDisk::newNode(bool isDirectory) {
  const auto node = std::make_shared<Node>();
  node->isDirectory = isDirectory;
  node->inode = ++inodes_;
  node->modified = node->changed = ++clock_;
  return node;
}

FileStatus SimulatedDisk::statusOf(const Node& node) const {
  FileStatus status;
  status.kind = node.isDirectory ? FileStatus::Kind::Directory : FileStatus::Kind::Regular;
  status.size = static_cast<std::int64_t>(node.bytes.size());
  status.links = 1;
  status.modified = node.modified;
  status.changed = node.changed;
  status.device = device_;
  status.inode = node.inode;
  return status;
}

void SimulatedDisk::changeNames(Change change) {
  if (change.from) {
    change.from->names.erase(change.fromName);
  }
  if (change.to) {
    change.to->names[change.toName] = change.node;
  }
  change.node->changed = ++clock_;
  pending_.push_back(std::move(change));
}

void SimulatedDisk::noteWrite(const NodePtr& node) {
  node->modified = node->changed = ++clock_;
  const auto isKnown = [&node](const Change& each) { return each.isWrite() && each.node == node; };
  if (std::none_of(pending_.begin(), pending_.end(), isKnown)) {
    pending_.push_back({node});
  }
}

void SimulatedDisk::syncFile(const NodePtr& node) {
  node->syncedBytes = node->bytes;
  pending_.erase(
      std::remove_if(pending_.begin(), pending_.end(),
                     [&node](const Change& each) { return each.isWrite() && each.node == node; }),
      pending_.end());
}

void SimulatedDisk::syncDirectory(const NodePtr& node) {
  std::vector<Change> rest;
  for (Change& each : pending_) {
    if (each.isWrite() || (each.to ? each.to : each.from) != node) {
      rest.push_back(std::move(each));
      continue;
    }
    if (each.from) {
      each.from->syncedNames.erase(each.fromName);
    }
    if (each.to) {
      each.to->syncedNames[each.toName] = each.node;
    }
  }
  pending_ = std::move(rest);
}

}  // namespace zentrel::vistabase::ardelivery
