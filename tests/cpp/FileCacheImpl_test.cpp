#include "delivery/FileCache/FileCacheImpl.h"

#include "delivery/FileCache/CacheMetadata.h"
#include "tests/cpp/Mocks.h"
#include "tests/cpp/Operations.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::_;
using testing::InSequence;
using testing::Return;
using testing::StrictMock;
using testing::Throw;

/// A cache over "/r" made of mocks alone: each test tells the whole sequence of calls.
class FileCacheSequence : public testing::Test {
 protected:
  template <class Mock>
  std::unique_ptr<Mock> keep(Mock*& mock) {
    auto owner = std::make_unique<Mock>();
    mock = owner.get();
    return owner;
  }

  void expectReload(std::vector<std::pair<std::string, CacheMetadataEntry>> records,
                    bool changed = false) {
    EXPECT_CALL(*filesystem_, isFile(Path("/r/metadata.json"))).WillOnce(Return(true));
    EXPECT_CALL(*io_, readFile("/r/metadata.json")).WillOnce(Return("stored"));
    EXPECT_CALL(*serializer_, deserialize("stored")).WillOnce([](const std::string&) {
      return quovix::make_unique_ref<CacheMetadata>();
    });
    EXPECT_CALL(*synchronizer_, synchronize(_, Path("/r"), Names{"metadata.json", "extra"}))
        .WillOnce([records, changed](auto&&...) {
          return SynchronizationResult{std::make_unique<CacheMetadata>(records), changed};
        });
    if (changed) {
      expectSave();
    }
  }

  void expectSave() {
    EXPECT_CALL(*filesystem_, createDirectories(Path("/r"))).WillOnce(Return(false));
    EXPECT_CALL(*serializer_, serialize(_)).WillOnce(Return("saved"));
    EXPECT_CALL(*io_, writeFile("/r/metadata.json", "saved"));
  }

  void expectRemoval(const std::string& name, bool isFile, bool removed) {
    EXPECT_CALL(*filesystem_, isFile(Path("/r/" + name))).WillOnce(Return(isFile));
    if (isFile) {
      EXPECT_CALL(*filesystem_, remove(Path("/r/" + name))).WillOnce(Return(removed));
    } else {
      EXPECT_CALL(*filesystem_, removeAll(Path("/r/" + name))).WillOnce(Return(removed));
    }
    if (removed) {
      EXPECT_CALL(*filesystem_, exists(Path("/r/extra"))).WillOnce(Return(true));
      EXPECT_CALL(*filesystem_, remove(Path("/r/extra/" + name))).WillOnce(Return(false));
    }
  }

  const InSequence sequence_;
  StrictMock<MockFileIO>* io_;
  StrictMock<MockSerializer>* serializer_;
  StrictMock<MockSynchronizer>* synchronizer_;
  std::shared_ptr<StrictMock<MockFilesystem>> filesystem_ =
      std::make_shared<StrictMock<MockFilesystem>>();
  StrictMock<MockEvictor>* evictor_;
  FileCacheImpl cache_{"/r",        keep(io_),     keep(serializer_), keep(synchronizer_),
                       filesystem_, keep(evictor_)};
};

TEST_F(FileCacheSequence, insertAndLockReloadsFirstAndSavesNothing) {
  expectReload({});
  EXPECT_CALL(*filesystem_, createDirectories(Path("/r"))).WillOnce(Return(true));
  EXPECT_CALL(*filesystem_, exists(Path("/r/extra"))).WillOnce(Return(true));
  EXPECT_CALL(*filesystem_, remove(Path("/r/extra/a%:b"))).WillOnce(Return(true));
  EXPECT_EQ("/r/a%:b", cache_.insertAndLock("a:b")->path);
}

TEST_F(FileCacheSequence, commitMeasuresThenEscapesTheNameOnceMore) {
  EXPECT_CALL(*filesystem_, getSize(Path("/r/a%:b"))).WillOnce(Return(9));
  expectReload({{"a%:b", {1, 1, false}}, {"a%%:b", {2, 2, false}}});
  EXPECT_CALL(*evictor_, selectKeysToEvict(_)).WillOnce([](const ICacheMetadata& metadata) {
    EXPECT_EQ(10, metadata.getTotalSize()) << "9 for the name that was escaped twice";
    return std::vector<std::string>();
  });
  expectSave();
  cache_.commit("a:b");
}

TEST_F(FileCacheSequence, commitReloadsForEachEvictionAndSavesWhatTheLastReloadGave) {
  expectReload({{"k", {1, 1, false}}}, true);
  EXPECT_CALL(*evictor_, selectKeysToEvict(_))
      .WillOnce(Return(std::vector<std::string>{"old", "dir"}));
  expectReload({});
  expectRemoval("old", true, true);
  expectReload({{"k", {7, 1, false}}});
  expectRemoval("dir", false, false);
  EXPECT_CALL(*filesystem_, createDirectories(Path("/r")));
  EXPECT_CALL(*serializer_, serialize(_)).WillOnce([](const ICacheMetadata& metadata) {
    EXPECT_EQ(7, metadata.getTotalSize()) << "not the 100 that was committed";
    return "saved";
  });
  EXPECT_CALL(*io_, writeFile("/r/metadata.json", "saved"));
  cache_.commit("k", 100);
}

TEST_F(FileCacheSequence, lookUpsReloadUnlessTheyDoNotPromote) {
  EXPECT_CALL(*filesystem_, exists(Path("/r/k"))).WillOnce(Return(true));
  EXPECT_EQ("/r/k", cache_.getCacheEntryWithoutPromotion("k")->path);
  expectReload({{"k", {1, 1, false}}});
  EXPECT_CALL(*filesystem_, exists(Path("/r/k"))).WillOnce(Return(true));
  expectSave();
  EXPECT_EQ("/r/k", cache_.getCacheEntry("k")->path);
}

TEST_F(FileCacheSequence, keysThatAreNotForFilesAreRefusedBeforeAnythingIsCalled) {
  const std::string root = "its file would be the root itself";
  const std::string own = "its file would be one of the cache's own";
  const struct {
    std::string key, quoted, reason;
  } cases[] = {
      {"", "", root},
      {".", ".", root},
      {"..", "..", "its file would lie outside the root"},
      {"/..", "/..", root + ", or a directory of other keys' files"},
      {"a/b/..", "a/b/..", root + ", or a directory of other keys' files"},
      {std::string("a\0b", 3), "a\\0b", "its file's name would be cut short at a zero byte"},
      {"metadata.json", "metadata.json", own},
      {"extra", "extra", own},
  };
  for (const auto& [key, quoted, reason] : cases) {
    for (const Operation& operation : kOperations) {
      if (operation.signature.find("string") != std::string::npos) {
        try {
          operation.call(cache_, key);
          EXPECT_EQ("memContains", operation.label) << quoted;
        } catch (const std::runtime_error& error) {
          EXPECT_EQ("Refused the key '" + quoted + "': " + reason, error.what());
        }
      }
    }
    EXPECT_EQ(IFileCache::MemContainsStatus::Absent, cache_.memContains(key));
  }
}

TEST_F(FileCacheSequence, aFailurePassesThroughAndEndsTheOperation) {
  expectReload({});
  EXPECT_CALL(*filesystem_, createDirectories(_)).WillOnce(Throw(std::runtime_error("full")));
  EXPECT_THROW(cache_.unlock("k"), std::runtime_error);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
