#pragma once

#include <gmock/gmock.h>

#include "delivery/FileCache/ICacheEvictor.h"
#include "delivery/FileCache/ICacheMetadataFilesystemSynchronizer.h"
#include "delivery/FileCache/ICacheMetadataSerializer.h"
#include "delivery/FileCache/IFileCache.h"
#include "delivery/ModelCache/ICacheDescriptorSerializer.h"
#include "delivery/Storage/IFileIO.h"
#include "delivery/Storage/IFilesystemOperations.h"

namespace zentrel::vistabase::ardelivery {

using Path = boost::filesystem::path;
using Names = std::unordered_set<std::string>;
using Metas = std::vector<std::pair<std::string, FileCacheEntryMeta>>;

struct MockFileIO : IFileIO {
  MOCK_METHOD(std::string, readFile, (const std::string&), (override));
  MOCK_METHOD(void, writeFile, (const std::string&, const std::string&), (override));
  MOCK_METHOD(void, moveFile, (const std::string&, const std::string&), (override));
};

struct MockFilesystem : IFilesystemOperations {
  MOCK_METHOD(bool, isFile, (const Path&), (override));
  MOCK_METHOD(bool, createDirectories, (const Path&), (override));
  MOCK_METHOD(bool, exists, (const Path&), (override));
  MOCK_METHOD(bool, remove, (const Path&), (override));
  MOCK_METHOD(bool, removeAll, (const Path&), (override));
  MOCK_METHOD(std::uint64_t, getSize, (const Path&), (override));
  MOCK_METHOD(Names, listDirectory, (const Path&), (override));
};

struct MockSerializer : ICacheMetadataSerializer {
  MOCK_METHOD(std::string, serialize, (const ICacheMetadata&), (override));
  MOCK_METHOD(quovix::unique_ref<ICacheMetadata>, deserialize, (const std::string&), (override));
};

struct MockSynchronizer : ICacheMetadataFilesystemSynchronizer {
  MOCK_METHOD(SynchronizationResult, synchronize,
              (std::unique_ptr<ICacheMetadata>, const Path&, const Names&), (override));
};

struct MockEvictor : ICacheEvictor {
  MOCK_METHOD(std::vector<std::string>, selectKeysToEvict, (const ICacheMetadata&), (override));
};

struct MockFileCache : IFileCache {
  MOCK_METHOD(std::shared_ptr<FileCacheEntry>, insertAndLock, (const std::string&), (override));
  MOCK_METHOD(void, commit, (const std::string&), (override));
  MOCK_METHOD(void, commit, (const std::string&, std::int64_t), (override));
  MOCK_METHOD(void, unlock, (const std::string&), (override));
  MOCK_METHOD(std::shared_ptr<FileCacheEntry>, getCacheEntry, (const std::string&), (override));
  MOCK_METHOD(std::shared_ptr<FileCacheEntry>, getCacheEntryWithoutPromotion, (const std::string&),
              (override));
  MOCK_METHOD(bool, updateExtra, (const std::string&, BytesVector&&), (override));
  MOCK_METHOD(Metas, getAllMetas, (), (override));
  MOCK_METHOD(MemContainsStatus, memContains, (const std::string&), (override));
  MOCK_METHOD(bool, remove, (const std::string&), (override));
  MOCK_METHOD(std::int64_t, getSize, (), (override));
  MOCK_METHOD(void, clear, (), (override));
  MOCK_METHOD(void, flushExtra, (), (override));
};

struct MockDescriptorSerializer : ICacheDescriptorSerializer {
  MOCK_METHOD(std::string, serialize, (const CacheDescriptor&), (override));
  MOCK_METHOD(std::unique_ptr<CacheDescriptor>, deserialize, (const std::string&), (override));
};

}  // namespace zentrel::vistabase::ardelivery
