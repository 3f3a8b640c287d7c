#pragma once

#include <functional>

#include "delivery/FileCache/CacheEvictor.h"
#include "delivery/FileCache/CacheMetadataFilesystemSynchronizer.h"
#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/FileCache/FileCacheImpl.h"
#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"

namespace zentrel::vistabase::ardelivery {

/// Called with the name of each storage operation before it runs; throwing fails the operation.
using Hook = std::function<void(const std::string& operation)>;

struct ObservedFilesystem : IFilesystemOperations {
  using Path = boost::filesystem::path;
  explicit ObservedFilesystem(const Hook& hook) : on(hook) {}
  bool isFile(const Path& path) override { return on(__func__), real.isFile(path); }
  bool exists(const Path& path) override { return on(__func__), real.exists(path); }
  bool remove(const Path& path) override { return on(__func__), real.remove(path); }
  bool removeAll(const Path& path) override { return on(__func__), real.removeAll(path); }
  std::uint64_t getSize(const Path& path) override { return on(__func__), real.getSize(path); }
  bool createDirectories(const Path& path) override {
    return on(__func__), real.createDirectories(path);
  }
  std::unordered_set<std::string> listDirectory(const Path& path) override {
    return on(__func__), real.listDirectory(path);
  }
  const Hook& on;
  FilesystemOperations real;
};

struct ObservedFileIO : IFileIO {
  explicit ObservedFileIO(const Hook& hook) : on(hook) {}
  std::string readFile(const std::string& path) override {
    return on(__func__), real.readFile(path);
  }
  void writeFile(const std::string& path, const std::string& content) override {
    on(__func__), real.writeFile(path, content);
  }
  void moveFile(const std::string& from, const std::string& to) override {
    on(__func__), real.moveFile(from, to);
  }
  const Hook& on;
  FileIO real;
};

/// The file cache of `createFileCache` without its error logging, on observed storage.
template <class Cache = FileCacheImpl>
std::shared_ptr<IFileCache> observedCache(const std::string& root, std::int64_t budget,
                                          const Hook& hook) {
  const auto filesystem = quovix::make_shared_ref<ObservedFilesystem>(hook);
  return std::make_shared<Cache>(root, std::make_unique<ObservedFileIO>(hook),
                                 std::make_unique<CacheMetadataSerializer>(),
                                 std::make_unique<CacheMetadataFilesystemSynchronizer>(filesystem),
                                 filesystem, std::make_unique<CacheEvictor>(budget));
}

}  // namespace zentrel::vistabase::ardelivery
