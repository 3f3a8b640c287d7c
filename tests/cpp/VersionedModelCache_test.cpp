#include "delivery/ModelCache/VersionedModelCacheImpl.h"

#include <gmock/gmock.h>

#include "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging.h"
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

/// A versioned cache over files "a" to "d", in a file cache whose budget of 0 has any commit evict.
class VersionedModelCacheTest : public testing::Test {
 protected:
  VersionedModelCacheTest() {
    for (const char* name : {"a", "b", "c", "d"}) {
      root_.write(name, "1");
    }
  }

  std::unique_ptr<VersionedModelCacheImpl> open() {
    return std::make_unique<VersionedModelCacheImpl>(
        std::make_unique<ObservedFileIO>(indexHook_), std::make_unique<CacheDescriptorSerializer>(),
        files_,
        std::make_shared<CapabilityModelTypeSerializer>(ModelTypeNames{{0, "t"}, {1, "u"}}));
  }
  std::function<void()> add(int version, const char* type, const char* key) {
    return [=] { cache_->addModelIfInCache(version, {type, key}); };
  }
  void writeIndex(const CacheDescriptor& descriptor) {
    root_.write("versioned_index", CacheDescriptorSerializer().serialize(descriptor));
  }
  std::string index() {
    return meaning(*CacheDescriptorSerializer().deserialize(root_.read("versioned_index")));
  }
  /// The entries promoted since the last call.
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
  Hook hook_ = [](auto&) {}, indexHook_ = hook_;
  SoftErrorRecorder errors_;
  std::shared_ptr<IFileCache> files_ =
      std::make_shared<FileCacheWithErrorLogging>(observedCache(root_.path(), 0, hook_));
  std::unique_ptr<VersionedModelCacheImpl> cache_ = open();
  SegmentationModelCache segmentation_{files_};
};

TEST_F(VersionedModelCacheTest, promotesWhatItFindsAndWritesOnlyChanges) {
  const struct {
    std::function<void()> call;
    std::string index, promoted;
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
  int insertions = 0;  // Of the index; each removes its extra bytes.
  for (const auto& [call, expected, promoted] : steps) {
    root_.write("extra/versioned_index", "");
    call();
    EXPECT_EQ(expected, index());
    EXPECT_EQ(promoted, takePromoted()) << expected;
    insertions += root_.has("extra/versioned_index") ? 0 : 1;
  }
  EXPECT_EQ(1, insertions);
  EXPECT_THAT(FilesystemOperations().listDirectory(root_.path()),
              testing::UnorderedElementsAre("a", "d", "extra", "versioned_index"));
}

TEST_F(VersionedModelCacheTest, queryReturnsOnlyPresentFilesAndRefusesUnknownTypes) {
  writeIndex({{{1, {{"t", "a"}, {"u", "gone"}}}, {2, {{"foreign", "a"}}}}});
  EXPECT_THAT(cache_->queryEntries(1), ElementsAre(Pair(0, root_ / "a")));
  EXPECT_EQ("Could not query entries: Could not deserialize type: foreign",
            errorOf([&] { cache_->queryEntries(2); }));
}

TEST_F(VersionedModelCacheTest, keepsTheModelsOfADuplicateVersion) {
  writeIndex({{{1, {{"t", "a"}}}, {2, {}}, {1, {{"u", "b"}}}}});
  EXPECT_TRUE(cache_->addModelIfInCache(1, {"t", "c"}));
  EXPECT_EQ("2:; 1: u=b; 1: t=c; ", index());
  EXPECT_THAT(cache_->queryEntries(1), ElementsAre(Pair(1, root_ / "b")));
  cache_->deleteVersion(1);
  EXPECT_EQ("2:; ", index());
}

TEST_F(VersionedModelCacheTest, allowsChangesByASoftErrorSinkDuringItsLookUps) {
  writeIndex({{{1, {{"t", "a"}, {"u", "b"}}}}});
  std::function<void()> change = [&] { cache_->deleteVersion(1); };
  int lookUps = 0;
  hook_ = [&](const std::string& operation) {
    operation == "exists" && ++lookUps == 2 ? change() : void();
  };
  EXPECT_THAT(cache_->queryEntries(1), IsEmpty());
  change = [&] { cache_->addModelIfInCache(3, {"t", "d"}); };
  lookUps = 0;
  EXPECT_TRUE(cache_->addModelIfInCache(2, {"t", "c"}));
  EXPECT_EQ("2: t=c; 3: t=d; ", index());
}

TEST_F(VersionedModelCacheTest, nextWriteStoresWhatAFailedWriteDidNot) {
  indexHook_ = [](auto&) { throw std::runtime_error("full"); };
  EXPECT_THROW(add(1, "t", "a")(), std::runtime_error);
  indexHook_ = [](auto&) {};
  EXPECT_TRUE(cache_->addModelIfInCache(2, {"t", "b"}));
  EXPECT_EQ("1: t=a; 2: t=b; ", index());
}

TEST_F(VersionedModelCacheTest, namesTheOperationThatFailsOnTheIndexAndCanRetryIt) {
  const struct {
    std::function<void()> call;
    std::string error, unknownError;
  } cases[] = {
      {add(1, "t", "b"), "Could not add model into the cache: 100%s",
       "Could not add mode into the cache - unknown exception"},
      {[&] { cache_->queryEntries(1); }, "Could not query entries: 100%s",
       "Could not query entries - unknown exception"},
      {[&] { cache_->queryVersions(); }, "Could not query versions: 100%s",
       "Could not query versions - unknown exception"},
      {[&] { cache_->deleteVersion(1); }, "Could not delete version: 1 with exception: 100%s",
       "Could not delete version: 1 unknown exception: "},
  };
  for (const auto& [call, error, unknownError] : cases) {
    writeIndex({{{1, {{"t", "a"}}}}});
    cache_ = open();
    indexHook_ = [](auto&) { throw std::runtime_error("100%s"); };
    EXPECT_EQ(error, errorOf(call));
    indexHook_ = [](auto&) { throw 1; };
    EXPECT_EQ(unknownError, errorOf(call));
    indexHook_ = [](auto&) {};
    EXPECT_EQ("no error", errorOf(call));
  }
}

TEST_F(VersionedModelCacheTest, throwsIfTheFileCacheCannotHoldTheIndex) {
  writeIndex({{{1, {{"t", "a"}}}, {2, {}}}});
  cache_->queryVersions();
  const std::string before = index();
  hook_ = [](auto&) { throw std::runtime_error("full"); };
  EXPECT_EQ(
      "Could not delete version: 1 with exception: "
      "Could not insert the index key into the cache.",
      errorOf([&] { cache_->deleteVersion(1); }));
  EXPECT_EQ(before, index());
  EXPECT_THAT(errors_.takeMessages(), testing::SizeIs(3));
}

TEST_F(VersionedModelCacheTest, acceptsOnlyTypesOfItsCapability) {
  for (const std::string type : {"SEG_INIT_NET.PB", "pdm_multires.bin", ""}) {
    const auto add = [&] { segmentation_.addModelForVersionIfInCache(1, {"a", type}); };
    EXPECT_EQ("Unknown serialized type: " + type, errorOf(add));
  }
}

TEST_F(VersionedModelCacheTest, trimsToAVersionOnlyIfItExists) {
  EXPECT_TRUE(segmentation_.addModelForVersionIfInCache(-1, {"a", "seg_init_net.pb"}));
  EXPECT_TRUE(segmentation_.addModelForVersionIfInCache(2, {"b", "seg_predict_net.pb"}));
  segmentation_.trimExceptVersion(7);
  EXPECT_THAT(segmentation_.queryVersions(), ElementsAre(-1, 2));
  auto paths = std::make_shared<SegmentationModelPaths>();
  EXPECT_FALSE(segmentation_.hasModelsForVersion(2) || segmentation_.getModelsForVersion(2, paths));
  EXPECT_NE(nullptr, paths) << "an incomplete version leaves it unchanged";
  EXPECT_TRUE(segmentation_.addModelForVersionIfInCache(2, {"a", "seg_init_net.pb"}));
  EXPECT_TRUE(segmentation_.hasModelsForVersion(2));
  segmentation_.deleteVersion(-1);
  EXPECT_THAT(segmentation_.queryVersions(), ElementsAre(2));
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
