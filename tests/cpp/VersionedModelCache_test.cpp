#include "delivery/ModelCache/VersionedModelCacheImpl.h"

#include <gmock/gmock.h>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"
#include "tests/cpp/Errors.h"
#include "tests/cpp/ObservedStorage.h"
#include "tests/cpp/SoftErrorRecorder.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

constexpr const char* kIndex = "versioned_index";

/// A versioned cache over files "a", "b", "c" and "d".
class VersionedModelCacheTest : public testing::Test {
 protected:
  VersionedModelCacheTest() {
    for (const char* name : {"a", "b", "c", "d"}) {
      root_.write(name, "");
    }
  }

  std::unique_ptr<VersionedModelCacheImpl> open() {
    return std::make_unique<VersionedModelCacheImpl>(
        std::make_unique<ObservedFileIO>(observer_), std::make_unique<CacheDescriptorSerializer>(),
        std::make_shared<ObservedFileCache>(observer_, createFileCache(root_.path(), 1000)),
        std::make_shared<CapabilityModelTypeSerializer>(ModelTypeNames{{0, "t"}, {1, "u"}}));
  }
  /// Has the index hold these versions.
  void store(const CacheDescriptor& descriptor) {
    root_.write(kIndex, CacheDescriptorSerializer().serialize(descriptor));
  }
  /// The index, shortly: "1: t=a u=b; 2: t=a; "
  std::string stored() {
    const auto descriptor = CacheDescriptorSerializer().deserialize(root_.read(kIndex));
    std::string text;
    for (const VersionRecord& version : descriptor->versions) {
      text += std::to_string(version.version) + ":";
      for (const ModelRecord& model : version.models) {
        text += " " + model.type + "=" + model.cacheKey;
      }
      text += "; ";
    }
    return text;
  }

  TemporaryDirectory root_;
  Observer observer_{root_.path()};
  std::unique_ptr<VersionedModelCacheImpl> cache_ = open();
};

TEST_F(VersionedModelCacheTest, callsTheFileCacheInThisOrderAndWritesOnlyChanges) {
  const std::string lookUp = "getCacheEntry versioned_index";
  const std::string write = lookUp + ", writeFile versioned_index, unlock versioned_index";
  const std::string insert = lookUp +
                             ", insertAndLock versioned_index, writeFile versioned_index"
                             ", unlock versioned_index";
  const auto add = [this](int version, const char* type, const char* key) {
    return [=] { cache_->addModelIfInCache(version, {type, key}); };
  };
  const struct {
    std::function<void()> call;
    std::string calls, stored;
  } steps[] = {
      {[&] { EXPECT_THAT(cache_->queryVersions(), IsEmpty()); }, lookUp, ""},
      {add(1, "t", "gone"), "getCacheEntry gone", ""},
      {add(1, "t", "a"), "getCacheEntry a, " + insert, "1: t=a; "},
      {add(1, "t", "a"), "getCacheEntry a", "1: t=a; "},
      {add(1, "u", "b"), "getCacheEntry b, " + write, "1: t=a u=b; "},
      {add(2, "u", "b"), "getCacheEntry b, " + write, "1: t=a u=b; 2: u=b; "},
      {add(1, "t", "c"), "getCacheEntry c, " + write, "2: u=b; 1: t=c u=b; "},
      {[&] { cache_->queryEntries(3); }, "", "2: u=b; 1: t=c u=b; "},
      {[&] { cache_->queryEntries(1); }, "getCacheEntry c, getCacheEntry b",
       "2: u=b; 1: t=c u=b; "},
      {[&] { cache_->deleteVersion(7); }, "", "2: u=b; 1: t=c u=b; "},
      {[&] { cache_->deleteVersion(1); }, "remove c, " + write, "2: u=b; "},
      {[&] { (cache_ = open())->deleteVersion(2); },
       lookUp + ", readFile versioned_index, remove b, " + write, ""},
  };
  for (const auto& [call, calls, expected] : steps) {
    call();
    EXPECT_EQ(calls, observer_.takeCalls());
    EXPECT_EQ(expected, stored()) << calls;
  }
}

TEST_F(VersionedModelCacheTest, answersWithTheFilesThatAreThere) {
  store({{{1, {{"t", "a"}, {"u", "b"}}}}});
  EXPECT_THAT(cache_->queryVersions(), ElementsAre(1));
  EXPECT_THAT(cache_->queryEntries(1),
              UnorderedElementsAre(Pair(0, root_ / "a"), Pair(1, root_ / "b")));
  std::filesystem::remove(root_ / "b");
  EXPECT_THAT(cache_->queryEntries(1), ElementsAre(Pair(0, root_ / "a")));
  EXPECT_THAT(cache_->queryEntries(2), IsEmpty());
}

TEST_F(VersionedModelCacheTest, losesNoModelsOfAVersionThatIsThereTwice) {
  store({{{1, {{"t", "a"}}}, {2, {}}, {1, {{"u", "b"}}}}});
  EXPECT_TRUE(cache_->addModelIfInCache(1, {"t", "c"}));
  EXPECT_EQ("2:; 1: u=b; 1: t=c; ", stored());
  EXPECT_THAT(cache_->queryEntries(1), ElementsAre(Pair(1, root_ / "b")));
  cache_->deleteVersion(1);
  EXPECT_EQ("2:; ", stored());
}

/// As a listener for soft errors may do.
TEST_F(VersionedModelCacheTest, mayBeChangedFromWithinItsLookUps) {
  store({{{1, {{"t", "a"}, {"u", "b"}}}}});
  std::function<void()> change = [&] { cache_->deleteVersion(1); };
  int lookUps = 0;
  observer_.hook = [&](const std::string& operation) {
    if (operation == "getCacheEntry" && ++lookUps == 2) {
      change();
    }
  };
  EXPECT_THAT(cache_->queryEntries(1), IsEmpty());
  change = [&] { cache_->addModelIfInCache(3, {"t", "d"}); };
  lookUps = 0;
  EXPECT_TRUE(cache_->addModelIfInCache(2, {"t", "c"}));
  EXPECT_EQ("2: t=c; 3: t=d; ", stored());
}

TEST_F(VersionedModelCacheTest, keepsInMemoryWhatCouldNotBeWritten) {
  const SoftErrorRecorder recorder;
  observer_.hook = [this](const std::string& operation) {
    if (operation == "insertAndLock") {
      root_.write("metadata.json", "damaged");
    }
  };
  EXPECT_EQ("Could not add model into the cache: Could not insert the index key into the cache.",
            errorOf([&] {
              cache_->addModelIfInCache(1, {"t", "a"});
            }));
  std::filesystem::remove(root_ / "metadata.json");
  observer_.hook = [](auto&) {};
  EXPECT_TRUE(cache_->addModelIfInCache(2, {"t", "b"}));
  EXPECT_EQ("1: t=a; 2: t=b; ", stored());
}

TEST_F(VersionedModelCacheTest, prefixesWhateverFailsAndTriesAFailedLoadAgain) {
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
  store({{{1, {{"foreign", "a"}}}}});
  for (const auto& [call, withText, unknown] : cases) {
    observer_.hook = [](auto&) { throw std::runtime_error("x"); };
    EXPECT_EQ(withText, errorOf(call));
    observer_.hook = [](auto&) { throw 1; };
    EXPECT_EQ(unknown, errorOf(call));
  }
  observer_.hook = [](auto&) {};
  EXPECT_EQ("Could not query entries: Could not deserialize type: foreign",
            errorOf([&] { cache_->queryEntries(1); }));
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
