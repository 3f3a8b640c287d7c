#include <gmock/gmock.h>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/ModelCache/FacetrackerModelCache.h"
#include "delivery/ModelCache/SegmentationModelCache.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

const std::vector<std::string> kFaceTypes = {"face_tracker_model.bin", "face_detector_model.bin",
                                             "features_model.bin", "pdm_multires.bin"};

/// Model caches over a real file cache in a directory of its own.
class ModelCacheOnDisk : public testing::Test {
 protected:
  void addVersion(int version, const std::string& keyPrefix) {
    for (const std::string& type : kFaceTypes) {
      root_.write(keyPrefix + type, "model");
      EXPECT_TRUE(faces_.addModelForVersionIfInCache(version, {keyPrefix + type, type}));
    }
  }

  TemporaryDirectory root_;
  std::shared_ptr<IFileCache> files_ = createFileCache(root_.path(), 1'000'000);
  FacetrackerModelCache faces_{files_};
};

TEST_F(ModelCacheOnDisk, answersOnlyForCompleteVersions) {
  addVersion(1, "v1-");
  std::shared_ptr<FacetrackerModelPaths> paths;
  ASSERT_TRUE(faces_.getModelsForVersion(1, paths));
  const auto untouched = paths;
  files_->remove("v1-pdm_multires.bin");
  EXPECT_FALSE(faces_.getModelsForVersion(1, paths));
  EXPECT_EQ(untouched, paths);
  EXPECT_FALSE(faces_.addModelForVersionIfInCache(1, {"absent", kFaceTypes[1]}));
}

TEST_F(ModelCacheOnDisk, trimsAllButAVersionThatIsThere) {
  addVersion(3, "a-");
  faces_.trimExceptVersion(7);
  EXPECT_TRUE(faces_.hasModelsForVersion(3)) << "the version to keep is absent";
  faces_.trimExceptVersion(3);
  addVersion(5, "b-");
  EXPECT_TRUE(faces_.addModelForVersionIfInCache(7, {"b-pdm_multires.bin", "pdm_multires.bin"}));
  faces_.trimExceptVersion(7);
  EXPECT_FALSE(root_.has("a-pdm_multires.bin"));
  EXPECT_FALSE(root_.has("b-features_model.bin"));
  EXPECT_TRUE(root_.has("b-pdm_multires.bin")) << "shared with the version that stays";
  EXPECT_EQ(R"({"versions":[{"version":7,"models":[{"type":"pdm_multires.bin",)"
            R"("cacheKey":"b-pdm_multires.bin"}]}]})",
            root_.read("versioned_index"));
}

TEST_F(ModelCacheOnDisk, knowsItsOwnTypesOnly) {
  SegmentationModelCache segmentation(files_);
  for (const std::string type : {"SEG_INIT_NET.PB", "pdm_multires.bin", ""}) {
    try {
      segmentation.addModelForVersionIfInCache(1, {"k", type});
      ADD_FAILURE() << type;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ("Unknown serialized type: " + type, error.what());
    }
  }
  EXPECT_FALSE(root_.has("versioned_index"));
  root_.write("k1", "");
  root_.write("k2", "");
  EXPECT_TRUE(segmentation.addModelForVersionIfInCache(-1, {"k1", "seg_init_net.pb"}));
  EXPECT_EQ(nullptr, segmentation.getModelPaths(-1));
  EXPECT_TRUE(segmentation.addModelForVersionIfInCache(-1, {"k2", "seg_predict_net.pb"}));
  EXPECT_EQ(root_ / "k1", segmentation.getModelPaths(-1)->initNetPath);
  EXPECT_EQ(root_ / "k2", segmentation.getModelPaths(-1)->predictNetPath);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
