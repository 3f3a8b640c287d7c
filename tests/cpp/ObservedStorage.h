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
  using Path = const boost::filesystem::path&;
  using Names = std::unordered_set<std::string>;
  explicit ObservedFilesystem(const Hook& hook) : on(hook) {}
  bool isFile(Path path) override { return on(__func__), real.isFile(path); }
  bool exists(Path path) override { return on(__func__), real.exists(path); }
  bool remove(Path path) override { return on(__func__), real.remove(path); }
  bool removeAll(Path path) override { return on(__func__), real.removeAll(path); }
  std::uint64_t getSize(Path path) override { return on(__func__), real.getSize(path); }
  bool createDirectories(Path path) override { return on(__func__), real.createDirectories(path); }
  Names listDirectory(Path path) override { return on(__func__), real.listDirectory(path); }
  const Hook& on;
  FilesystemOperations real;
};

struct ObservedFileIO : IFileIO {
  using Text = const std::string&;
  explicit ObservedFileIO(const Hook& hook) : on(hook) {}
  std::string readFile(Text path) override { return on(__func__), real.readFile(path); }
  void writeFile(Text path, Text content) override { on(__func__), real.writeFile(path, content); }
  void moveFile(Text from, Text to) override { on(__func__), real.moveFile(from, to); }
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
