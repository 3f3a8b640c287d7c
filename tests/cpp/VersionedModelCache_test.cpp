#include "delivery/ModelCache/VersionedModelCacheImpl.h"

#include <gmock/gmock.h>

#include "delivery/ModelCache/SegmentationModelCache.h"
#include "tests/cpp/Errors.h"
#include "tests/cpp/ObservedStorage.h"
#include "tests/cpp/TemporaryDirectory.h"
#include "tests/cpp/reading.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// A versioned cache over files "a" to "d" and a file cache without room, whose commits would
/// evict them.
class VersionedModelCacheTest : public testing::Test {
 protected:
  VersionedModelCacheTest() {
    for (const char* name : {"a", "b", "c", "d"}) {
      root_.write(name, "1");
    }
  }

  std::unique_ptr<VersionedModelCacheImpl> open() {
    return std::make_unique<VersionedModelCacheImpl>(
        std::make_unique<ObservedFileIO>(indexObserver_),
        std::make_unique<CacheDescriptorSerializer>(), files_,
        std::make_shared<CapabilityModelTypeSerializer>(ModelTypeNames{{0, "t"}, {1, "u"}}));
  }
  /// Has the index hold these versions.
  void store(const CacheDescriptor& descriptor) {
    root_.write("versioned_index", CacheDescriptorSerializer().serialize(descriptor));
  }
  /// The index, shortly: "1: t=a u=b; 2: t=a; "
  std::string stored() {
    const auto descriptor = CacheDescriptorSerializer().deserialize(root_.read("versioned_index"));
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
  /// The entries that were promoted since the last time.
  std::string takePromoted() {
    std::string names;
    const auto records = CacheMetadataSerializer().deserialize(root_.read("metadata.json"));
    for (const auto& [name, record] : meaning(*records)) {
      names += record.second == 0 ? "" : name + " ";
    }
    boost::filesystem::remove(root_ / "metadata.json");
    return names;
  }

  TemporaryDirectory root_;
  Observer observer_{root_.path()}, indexObserver_{root_.path()};
  std::shared_ptr<IFileCache> files_ = observedCache(root_.path(), 0, observer_);
  std::unique_ptr<VersionedModelCacheImpl> cache_ = open();
};

TEST_F(VersionedModelCacheTest, promotesWhatItFindsAndWritesOnlyChanges) {
  const auto add = [this](int version, const char* type, const char* key) {
    return [=] { cache_->addModelIfInCache(version, {type, key}); };
  };
  const struct {
    std::function<void()> call;
    std::string stored, promoted;
  } steps[] = {
      {[&] { EXPECT_THAT(cache_->queryVersions(), IsEmpty()); }, "", ""},
      {add(1, "t", "gone"), "", ""},
      {add(1, "t", "a"), "1: t=a; ", "a "},
      {add(1, "t", "a"), "1: t=a; ", "a "},
      {add(1, "u", "b"), "1: t=a u=b; ", "b versioned_index "},
      {add(2, "u", "b"), "1: t=a u=b; 2: u=b; ", "b versioned_index "},
      {add(1, "t", "c"), "2: u=b; 1: t=c u=b; ", "c versioned_index "},
      {[&] { cache_->queryEntries(3); }, "2: u=b; 1: t=c u=b; ", ""},
      {[&] { cache_->queryEntries(1); }, "2: u=b; 1: t=c u=b; ", "b c "},
      {[&] { cache_->deleteVersion(7); }, "2: u=b; 1: t=c u=b; ", ""},
      {[&] { cache_->deleteVersion(1); }, "2: u=b; ", "versioned_index "},
      {[&] { (cache_ = open())->queryVersions(); }, "2: u=b; ", "versioned_index "},
      {[&] { cache_->deleteVersion(2); }, "", "versioned_index "},
  };
  int insertions = 0;  // Of the index, which cost it its extra bytes.
  for (const auto& [call, expected, promoted] : steps) {
    root_.write("extra/versioned_index", "");
    call();
    EXPECT_EQ(expected, stored());
    EXPECT_EQ(promoted, takePromoted()) << expected;
    insertions += root_.has("extra/versioned_index") ? 0 : 1;
  }
  EXPECT_EQ(1, insertions);
  EXPECT_THAT(FilesystemOperations().listDirectory(root_.path()),
              testing::UnorderedElementsAre("a", "d", "extra", "versioned_index"));
}

TEST_F(VersionedModelCacheTest, answersWithTheFilesThatAreThere) {
  store({{{1, {{"t", "a"}, {"u", "b"}}}, {2, {{"foreign", "a"}}}}});
  boost::filesystem::remove(root_ / "b");
  EXPECT_THAT(cache_->queryEntries(1), ElementsAre(Pair(0, root_ / "a")));
  EXPECT_EQ("Could not query entries: Could not deserialize type: foreign",
            errorOf([&] { cache_->queryEntries(2); }));
}

TEST_F(VersionedModelCacheTest, keepsTheModelsOfAVersionThatIsThereTwice) {
  store({{{1, {{"t", "a"}}}, {2, {}}, {1, {{"u", "b"}}}}});
  EXPECT_TRUE(cache_->addModelIfInCache(1, {"t", "c"}));
  EXPECT_EQ("2:; 1: u=b; 1: t=c; ", stored());
  EXPECT_THAT(cache_->queryEntries(1), ElementsAre(Pair(1, root_ / "b")));
  cache_->deleteVersion(1);
  EXPECT_EQ("2:; ", stored());
}

/// As a listener for soft errors may do.
TEST_F(VersionedModelCacheTest, copesWithChangesDuringItsLookUps) {
  store({{{1, {{"t", "a"}, {"u", "b"}}}}});
  std::function<void()> change = [&] { cache_->deleteVersion(1); };
  int lookUps = 0;
  observer_.hook = [&](const std::string& operation) {
    if (operation == "exists" && ++lookUps == 2) {
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
  indexObserver_.hook = [](auto&) { throw std::runtime_error("full"); };
  EXPECT_THROW(cache_->addModelIfInCache(1, {"t", "a"}), std::runtime_error);
  indexObserver_.hook = [](auto&) {};
  EXPECT_TRUE(cache_->addModelIfInCache(2, {"t", "b"}));
  EXPECT_EQ("1: t=a; 2: t=b; ", stored());
}

TEST_F(VersionedModelCacheTest, hasCompleteVersionsOfItsCapabilitysTypes) {
  SegmentationModelCache models(files_);
  for (const std::string type : {"SEG_INIT_NET.PB", "pdm_multires.bin", ""}) {
    EXPECT_EQ("Unknown serialized type: " + type, errorOf([&] {
                models.addModelForVersionIfInCache(1, {"a", type});
              }));
  }
  EXPECT_TRUE(models.addModelForVersionIfInCache(-1, {"a", "seg_init_net.pb"}));
  EXPECT_FALSE(models.hasModelsForVersion(-1));
  EXPECT_TRUE(models.addModelForVersionIfInCache(-1, {"b", "seg_predict_net.pb"}));
  EXPECT_TRUE(models.addModelForVersionIfInCache(2, {"b", "seg_predict_net.pb"}));
  std::shared_ptr<SegmentationModelPaths> paths;
  ASSERT_TRUE(models.getModelsForVersion(-1, paths));
  EXPECT_EQ(root_ / "a" + (root_ / "b"), paths->initNetPath + paths->predictNetPath);
  EXPECT_FALSE(models.getModelsForVersion(2, paths));
  EXPECT_NE(nullptr, paths) << "untouched";
  models.trimExceptVersion(7);
  EXPECT_TRUE(models.hasModelsForVersion(-1)) << "nothing is kept in favour of what is not there";
  models.deleteVersion(-1);
  EXPECT_THAT(models.queryVersions(), ElementsAre(2));
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
