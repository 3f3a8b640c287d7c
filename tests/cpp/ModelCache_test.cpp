#include <gtest/gtest.h>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/ModelCache/SegmentationModelCache.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

TEST(ModelCache, knowsItsOwnTypesAndAnswersForCompleteVersionsOnly) {
  const TemporaryDirectory root;
  const auto files = createFileCache(root.path(), 1'000'000);
  SegmentationModelCache models(files);
  root.write("k1", "");
  root.write("k2", "");
  for (const std::string type : {"SEG_INIT_NET.PB", "pdm_multires.bin", ""}) {
    try {
      models.addModelForVersionIfInCache(1, {"k1", type});
      ADD_FAILURE() << type;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ("Unknown serialized type: " + type, error.what());
    }
  }
  EXPECT_FALSE(root.has("versioned_index"));
  EXPECT_TRUE(models.addModelForVersionIfInCache(-1, {"k1", "seg_init_net.pb"}));
  EXPECT_FALSE(models.hasModelsForVersion(-1));
  EXPECT_TRUE(models.addModelForVersionIfInCache(-1, {"k2", "seg_predict_net.pb"}));
  std::shared_ptr<SegmentationModelPaths> paths;
  ASSERT_TRUE(models.getModelsForVersion(-1, paths));
  EXPECT_EQ(root / "k1", paths->initNetPath);
  EXPECT_EQ(root / "k2", paths->predictNetPath);
  files->remove("k2");
  const auto untouched = paths;
  EXPECT_FALSE(models.getModelsForVersion(-1, paths));
  EXPECT_EQ(untouched, paths);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
