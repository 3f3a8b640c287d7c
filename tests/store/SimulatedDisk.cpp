#include "tests/store/SimulatedDisk.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>

#include "store/StoreError.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Node = SimulatedDisk::Node;
using NodePtr = SimulatedDisk::NodePtr;

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
    disk_.sync(node_);
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
    return std::make_unique<SimulatedFile>(disk_, existing("openForReading", name), name);
  }
  std::unique_ptr<IFile> openForAppending(const std::string& name) override {
    return std::make_unique<SimulatedFile>(disk_, existing("openForAppending", name), name);
  }
  std::unique_ptr<IFile> create(const std::string& name) override {
    disk_.hook("create", name);
    if (find(name)) {
      fail(name, EEXIST);
    }
    const NodePtr node = disk_.newNode(false);
    disk_.changeNames({node, {}, {}, node_, name});
    return std::make_unique<SimulatedFile>(disk_, node, name);
  }
  std::unique_ptr<IDirectory> openDirectory(const std::string& name) override {
    const NodePtr node = existing("openDirectory", name);
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
    if (target->names.count(to) != 0 && target->names[to]->isDirectory) {
      fail(to, EISDIR);
    }
    const NodePtr node = find(from);
    node ? disk_.changeNames({node, node_, from, target, to}) : fail(from, ENOENT);
  }
  bool remove(const std::string& name) override {
    disk_.hook("remove", name);
    const NodePtr node = find(name);
    node ? disk_.changeNames({node, node_, name}) : void();
    return node != nullptr;
  }
  void removeDirectory(const std::string& name) override {
    disk_.changeNames({existing("removeDirectory", name), node_, name});
  }
  void touch(const std::string& name, std::int64_t modified) override {
    existing("touch", name)->modified = modified - modified % disk_.granularity;
  }
  void sync() override {
    disk_.hook("syncDirectory", "");
    disk_.sync(node_);
  }
  FileStatus status(const std::string& name) override {
    disk_.hook("status", name);
    const NodePtr node = find(name);
    return node ? disk_.statusOf(*node) : FileStatus();
  }
  FileStatus status() override { return disk_.statusOf(*node_); }
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
  NodePtr find(const std::string& name) const {
    const auto found = node_->names.find(name);
    return found == node_->names.end() ? nullptr : found->second;
  }
  NodePtr existing(std::string_view call, const std::string& name) const {
    disk_.hook(call, name);
    const NodePtr node = find(name);
    return node ? node : (fail(name, ENOENT), node);
  }

  SimulatedDisk& disk_;
  const NodePtr node_;
};

}  // namespace

SimulatedDisk::SimulatedDisk(const Image& image) : root_(newNode(true)) {
  for (const auto& [path, bytes] : image) {
    NodePtr node = root_;
    std::istringstream names(path);
    for (std::string name; std::getline(names, name, '/');) {
      NodePtr inside = node->names.count(name) != 0 ? node->names[name] : newNode(true);
      node->names[name] = node->syncedNames[name] = inside;
      node = std::move(inside);
    }
    node->isDirectory = path.back() == '/';
    node->bytes = node->syncedBytes = bytes;
  }
}

StoreEnvironment SimulatedDisk::environment() {
  return {[this](auto&) { return std::make_shared<SimulatedDirectory>(*this, root_); },
          &newOpenSslDigest};
}

void SimulatedDisk::failOnce(const std::string& call, const std::string& name, int error) {
  hook = [=](std::string_view each, const std::string& on) {
    if (each == call && on == name) {
      const std::pair failure(name, error);
      hook = [](auto, auto&) {};  // Destroys what was captured.
      fail(failure.first, failure.second);
    }
  };
}

NodePtr SimulatedDisk::newNode(bool isDirectory) {
  ++clock_;
  return std::make_shared<Node>(Node{isDirectory, clock_, clock_});
}

FileStatus SimulatedDisk::statusOf(const Node& node) const {
  const auto kind = node.isDirectory ? FileStatus::Kind::Directory : FileStatus::Kind::Regular;
  const auto size = static_cast<std::int64_t>(node.bytes.size());
  const auto inode = reinterpret_cast<std::uintptr_t>(&node);
  return {kind, size, 1, node.modified, node.changed, 1, inode};
}

}  // namespace zentrel::vistabase::ardelivery
