#pragma once

#include <functional>

#include "delivery/FileCache/CacheEvictor.h"
#include "delivery/FileCache/CacheMetadataFilesystemSynchronizer.h"
#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/FileCache/FileCacheImpl.h"
#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"

namespace zentrel::vistabase::ardelivery {

/// Is told each call of the objects below, before they pass it on to real ones.
class Observer {
 public:
  /// Arguments below `root` are noted without it.
  explicit Observer(std::string root) : root_(std::move(root) + "/") {}

  /// Runs first in each call; what it throws fails the call.
  std::function<void(const std::string& operation)> hook = [](auto&) {};

  void operator()(const std::string& operation, const std::string& argument) {
    const bool isBelow = argument.compare(0, root_.size(), root_) == 0;
    calls_ += (calls_.empty() ? "" : ", ") + operation + " ";
    calls_ += isBelow ? argument.substr(root_.size()) : argument + "/" == root_ ? "." : argument;
    hook(operation);
  }
  /// The calls since the last time: "isFile metadata.json, listDirectory ."
  std::string takeCalls() { return std::exchange(calls_, ""); }

 private:
  std::string root_, calls_;
};

struct ObservedFilesystem : IFilesystemOperations {
  using Path = boost::filesystem::path;
  explicit ObservedFilesystem(Observer& observer) : on(observer) {}
  bool isFile(const Path& path) override { return on("isFile", path.string()), real.isFile(path); }
  bool createDirectories(const Path& path) override {
    return on("createDirectories", path.string()), real.createDirectories(path);
  }
  bool exists(const Path& path) override { return on("exists", path.string()), real.exists(path); }
  bool remove(const Path& path) override { return on("remove", path.string()), real.remove(path); }
  bool removeAll(const Path& path) override {
    return on("removeAll", path.string()), real.removeAll(path);
  }
  std::uint64_t getSize(const Path& path) override {
    return on("getSize", path.string()), real.getSize(path);
  }
  std::unordered_set<std::string> listDirectory(const Path& path) override {
    return on("listDirectory", path.string()), real.listDirectory(path);
  }
  Observer& on;
  FilesystemOperations real;
};

struct ObservedFileIO : IFileIO {
  explicit ObservedFileIO(Observer& observer) : on(observer) {}
  std::string readFile(const std::string& path) override {
    return on("readFile", path), real.readFile(path);
  }
  void writeFile(const std::string& path, const std::string& content) override {
    on("writeFile", path), real.writeFile(path, content);
  }
  void moveFile(const std::string& from, const std::string& to) override {
    on("moveFile", from), real.moveFile(from, to);
  }
  Observer& on;
  FileIO real;
};

/// The file cache of `createFileCache` without its error logging, on observed storage.
template <class Cache = FileCacheImpl>
std::shared_ptr<IFileCache> observedCache(const std::string& root, std::int64_t budget,
                                          Observer& observer) {
  const auto filesystem = quovix::make_shared_ref<ObservedFilesystem>(observer);
  return std::make_shared<Cache>(root, std::make_unique<ObservedFileIO>(observer),
                                 std::make_unique<CacheMetadataSerializer>(),
                                 std::make_unique<CacheMetadataFilesystemSynchronizer>(filesystem),
                                 filesystem, std::make_unique<CacheEvictor>(budget));
}

}  // namespace zentrel::vistabase::ardelivery
