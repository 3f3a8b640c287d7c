#include "delivery/ModelCache/VersionedModelCacheImpl.h"

#include "tests/cpp/Mocks.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::_;
using testing::ElementsAre;
using testing::InSequence;
using testing::Pair;
using testing::Return;
using testing::StrictMock;
using testing::Throw;
using testing::UnorderedElementsAre;

std::shared_ptr<FileCacheEntry> entryAt(const std::string& path) {
  return std::make_shared<FileCacheEntry>(FileCacheEntry{path});
}

/// A versioned cache of mocks alone: each test tells the whole sequence of calls.
class VersionedModelCacheSequence : public testing::Test {
 protected:
  VersionedModelCacheSequence() {
    auto io = std::make_unique<StrictMock<MockFileIO>>();
    auto serializer = std::make_unique<StrictMock<MockDescriptorSerializer>>();
    io_ = io.get();
    serializer_ = serializer.get();
    cache_ = std::make_unique<VersionedModelCacheImpl>(
        std::move(io), std::move(serializer), files_,
        std::make_shared<CapabilityModelTypeSerializer>(ModelTypeNames{{0, "t"}, {1, "u"}}));
  }

  void expectLoad(CacheDescriptor descriptor) {
    EXPECT_CALL(*files_, getCacheEntry("versioned_index")).WillOnce(Return(entryAt("/i")));
    EXPECT_CALL(*io_, readFile("/i")).WillOnce(Return("stored"));
    EXPECT_CALL(*serializer_, deserialize("stored")).WillOnce([descriptor](const std::string&) {
      return std::make_unique<CacheDescriptor>(descriptor);
    });
  }
  void expectStore(const std::vector<int>& versions) {
    EXPECT_CALL(*files_, getCacheEntry("versioned_index")).WillOnce(Return(entryAt("/i")));
    EXPECT_CALL(*serializer_, serialize(_)).WillOnce([versions](const CacheDescriptor& descriptor) {
      std::vector<int> stored;
      for (const VersionRecord& record : descriptor.versions) {
        stored.push_back(record.version);
      }
      EXPECT_EQ(versions, stored);
      return "text";
    });
    EXPECT_CALL(*io_, writeFile("/i", "text"));
    EXPECT_CALL(*files_, unlock("versioned_index"));
  }
  void expectLookUp(const std::string& key, bool found = true) {
    EXPECT_CALL(*files_, getCacheEntry(key)).WillOnce(Return(found ? entryAt("/" + key) : nullptr));
  }

  const InSequence sequence_;
  StrictMock<MockFileIO>* io_;
  StrictMock<MockDescriptorSerializer>* serializer_;
  std::shared_ptr<StrictMock<MockFileCache>> files_ = std::make_shared<StrictMock<MockFileCache>>();
  std::unique_ptr<VersionedModelCacheImpl> cache_;
};

TEST_F(VersionedModelCacheSequence, insertsTheIndexOnceAndWritesOnlyChanges) {
  expectLookUp("versioned_index", false);
  EXPECT_THAT(cache_->queryVersions(), ElementsAre());
  expectLookUp("a", false);
  EXPECT_FALSE(cache_->addModelIfInCache(1, {"t", "a"}));

  expectLookUp("a");
  expectLookUp("versioned_index", false);
  EXPECT_CALL(*files_, insertAndLock("versioned_index")).WillOnce(Return(entryAt("/new")));
  EXPECT_CALL(*serializer_, serialize(_)).WillOnce(Return("text"));
  EXPECT_CALL(*io_, writeFile("/new", "text"));
  EXPECT_CALL(*files_, unlock("versioned_index"));
  EXPECT_TRUE(cache_->addModelIfInCache(1, {"t", "a"}));
  expectLookUp("a");
  EXPECT_TRUE(cache_->addModelIfInCache(1, {"t", "a"})) << "and nothing is written";
}

TEST_F(VersionedModelCacheSequence, movesTheChangedVersionToTheEndAndPromotesWhatItFinds) {
  expectLoad({{{1, {{"t", "a"}, {"u", "b"}}}, {2, {{"t", "a"}}}}});
  expectLookUp("c");
  expectStore({2, 1});
  EXPECT_TRUE(cache_->addModelIfInCache(1, {"t", "c"}));
  EXPECT_THAT(cache_->queryVersions(), ElementsAre(2, 1));
  for (const bool isThere : {true, false}) {
    expectLookUp("c");
    expectLookUp("b", isThere);
    const ModelEntries entries = cache_->queryEntries(1);
    EXPECT_EQ(isThere, entries.count(1) == 1);
    EXPECT_EQ("/c", entries.at(0));
  }
  EXPECT_TRUE(cache_->queryEntries(3).empty());
}

TEST_F(VersionedModelCacheSequence, deletesOnlyWhatNoOtherVersionUses) {
  expectLoad({{{1, {{"t", "a"}, {"u", "b"}, {"v", "c"}}}, {2, {{"u", "b"}}}}});
  cache_->deleteVersion(7);
  EXPECT_CALL(*files_, remove("a")).WillOnce(Return(false));
  EXPECT_CALL(*files_, remove("c")).WillOnce(Return(true));
  expectStore({2});
  cache_->deleteVersion(1);
  EXPECT_THAT(cache_->queryVersions(), ElementsAre(2));
}

TEST_F(VersionedModelCacheSequence, losesNoModelsOfAVersionThatIsThereTwice) {
  expectLoad({{{1, {{"t", "a"}}}, {2, {}}, {1, {{"u", "b"}}}}});
  expectLookUp("c");
  expectStore({2, 1, 1});
  EXPECT_TRUE(cache_->addModelIfInCache(1, {"t", "c"}));
  expectLookUp("b");
  EXPECT_EQ("/b", cache_->queryEntries(1).at(1));
  EXPECT_CALL(*files_, remove("b"));
  expectStore({2});
  cache_->deleteVersion(1);
}

TEST_F(VersionedModelCacheSequence, keepsInMemoryWhatCouldNotBeWritten) {
  expectLookUp("versioned_index", false);
  expectLookUp("a");
  expectLookUp("versioned_index", false);
  EXPECT_CALL(*files_, insertAndLock("versioned_index")).WillOnce(Return(nullptr));
  try {
    cache_->addModelIfInCache(1, {"t", "a"});
    ADD_FAILURE();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(
        "Could not add model into the cache: Could not insert the index key into the cache.",
        error.what());
  }
  expectLookUp("b");
  expectStore({1, 2});
  EXPECT_TRUE(cache_->addModelIfInCache(2, {"t", "b"}));
}

TEST_F(VersionedModelCacheSequence, prefixesWhateverFailsAndTriesAFailedLoadAgain) {
  const struct {
    std::function<void()> call;
    std::string withText, unknown;
  } cases[] = {
      {[&] {
         cache_->addModelIfInCache(1, {"t", "a"});
       },
       "Could not add model into the cache: x",
       "Could not add mode into the cache - unknown exception"},
      {[&] { cache_->queryEntries(1); }, "Could not query entries: x",
       "Could not query entries - unknown exception"},
      {[&] { cache_->queryVersions(); }, "Could not query versions: x",
       "Could not query versions - unknown exception"},
      {[&] { cache_->deleteVersion(-5); }, "Could not delete version: -5 with exception: x",
       "Could not delete version: -5 unknown exception: "},
  };
  for (const auto& [call, withText, unknown] : cases) {
    for (const bool known : {true, false}) {
      EXPECT_CALL(*files_, getCacheEntry("versioned_index")).WillOnce([known = known](auto&&) {
        return known ? throw std::runtime_error("x") : throw 1, nullptr;
      });
      try {
        call();
        ADD_FAILURE() << withText;
      } catch (const std::runtime_error& error) {
        EXPECT_EQ(known ? withText : unknown, error.what());
      }
    }
  }
  expectLoad({{{1, {{"foreign", "a"}}}}});
  expectLookUp("a");
  try {
    cache_->queryEntries(1);
    ADD_FAILURE();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ("Could not query entries: Could not deserialize type: foreign", error.what());
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
