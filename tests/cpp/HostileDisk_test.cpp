#include <gmock/gmock.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include "delivery/FileCache/createFileCache.h"
#include "tests/cpp/FileCacheCalls.h"
#include "tests/cpp/SoftErrorRecorder.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

/// A small file system of its own, with an entry "kept" in it.
class SmallDisk : public testing::Test {
 protected:
  void SetUp() override {
    if (::mount("tmpfs", root_.path().c_str(), "tmpfs", 0, "size=64k") != 0) {
      GTEST_SKIP() << "may not mount";
    }
    root_.write("kept", "kept");
    EXPECT_NE(nullptr, cache_->getCacheEntry("kept"));
  }
  ~SmallDisk() override { ::umount(root_.path().c_str()); }

  void expectOneReport(const std::string& ending) {
    ASSERT_EQ(1u, recorder_.records().size());
    EXPECT_THAT(recorder_.records()[0].message, EndsWith(ending));
    recorder_.records().clear();
  }

  TemporaryDirectory root_;
  SoftErrorRecorder recorder_;
  std::shared_ptr<IFileCache> cache_ = createFileCache(root_.path(), 1000);
};

TEST_F(SmallDisk, mayBeFull) {
  EXPECT_TRUE(cache_->updateExtra("kept", {1}));
  root_.write(".filler", std::string(100'000, 'x'));
  EXPECT_FALSE(cache_->updateExtra("kept", BytesVector(5000)));
  expectOneReport("Could not open file.");
  for (char name = 'a'; name < 'z'; ++name) {
    root_.write(std::string(250, name), "");  // Needs no room, but metadata.json then needs more.
  }
  EXPECT_EQ(0, cache_->getSize());
  expectOneReport("Could not open file.");
  EXPECT_EQ(nullptr, cache_->getCacheEntry("kept"));
  expectOneReport("' with exception: parse error: incomplete JSON at byte 4096");
  std::filesystem::remove(root_ / ".filler");
  std::filesystem::remove(root_ / "metadata.json");
  EXPECT_EQ(IFileCache::MemContainsStatus::Present, cache_->memContains(std::string(250, 'y')));
  EXPECT_NE(nullptr, cache_->getCacheEntry("kept"));
  EXPECT_EQ("kept", root_.read("kept"));
}

TEST_F(SmallDisk, mayBecomeReadOnly) {
  ASSERT_EQ(0, ::mount("", root_.path().c_str(), "", MS_REMOUNT | MS_RDONLY, ""));
  EXPECT_NE(nullptr, cache_->getCacheEntryWithoutPromotion("kept"));
  EXPECT_EQ(4, cache_->getSize());
  EXPECT_TRUE(recorder_.records().empty()) << "reading needs no writing";
  EXPECT_EQ(nullptr, cache_->getCacheEntry("kept"));
  expectOneReport("Could not open file.");
  EXPECT_FALSE(cache_->remove("kept"));
  EXPECT_EQ(1u, recorder_.records().size());
}

TEST(HostileDisk, writesStopAtTheFileSizeLimitAndGoOnWithoutIt) {
  const TemporaryDirectory root;
  const SoftErrorRecorder recorder;
  const auto cache = createFileCache(root.path(), 1000);
  root.write("k", "1");
  cache->unlock("k");
  rlimit old = {};
  ::getrlimit(RLIMIT_FSIZE, &old);
  ::signal(SIGXFSZ, SIG_IGN);
  const rlimit small = {10, old.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &small);
  cache->unlock("k");
  const bool updated = cache->updateExtra("k", BytesVector(11));
  ::setrlimit(RLIMIT_FSIZE, &old);
  EXPECT_FALSE(updated);
  ASSERT_EQ(2u, recorder.records().size());
  EXPECT_EQ("Error for unlock: Could not open file.", recorder.records()[0].message);
  EXPECT_THAT(recorder.records()[1].message,
              HasSubstr("Deserializing failed: '{\"entries\"' with exception: "))
      << "the write before has cut the metadata short";
  std::filesystem::remove(root / "metadata.json");
  EXPECT_TRUE(cache->updateExtra("k", BytesVector(11)));
}

TEST(HostileDisk, aRootMayGoAndComeBackUnderALivingCache) {
  const TemporaryDirectory root;
  const auto cache = createFileCache(root.path(), 1000);
  for (int round = 0; round < 3; ++round) {
    root.write("k", "1");
    EXPECT_NE(nullptr, cache->getCacheEntry("k"));
    std::filesystem::remove_all(root.path());
    const SoftErrorRecorder recorder;
    EXPECT_EQ(nullptr, cache->getCacheEntry("k"));
    EXPECT_EQ(1u, recorder.records().size());
  }
}

TEST(HostileDisk, aNameTooLongForAFileIsReportedAndHarmless) {
  const TemporaryDirectory root;
  root.write("k", "1");
  const auto cache = createFileCache(root.path(), 0);
  for (const FileCacheCall& operation : kFileCacheCalls) {
    if (operation.signature.find("getCacheEntry") == 0 || operation.label == "remove") {
      const SoftErrorRecorder recorder;
      EXPECT_TRUE(operation.call(*cache, std::string(300, 'x')));
      ASSERT_EQ(1u, recorder.records().size());
      EXPECT_THAT(recorder.records()[0].message, HasSubstr("File name too long"));
    }
  }
  EXPECT_EQ(1, cache->getSize());
}

TEST(HostileDisk, linksAreTakenAndTheirTargetsStay) {
  const TemporaryDirectory outside, root;
  outside.write("file", "outside");
  outside.write("dir/file", "outside");
  const SoftErrorRecorder recorder;
  const auto cache = createFileCache(root.path(), 0);
  for (const bool evict : {false, true}) {
    root.write("entry/own", "1");
    for (const std::string link : {"file", "entry/file"}) {
      std::filesystem::create_symlink(outside / "file", root / link);
    }
    for (const std::string link : {"dir", "entry/dir", "slash%", "dot%"}) {
      std::filesystem::create_symlink(outside / "dir", root / link);
    }
    if (evict) {
      cache->commit("dir");
    }
    for (const std::string key : {"file", "dir", "entry", "slash/", "dot/."}) {
      EXPECT_NE(evict, cache->remove(key)) << key;
    }
    EXPECT_EQ("outsideoutside", outside.read("file") + outside.read("dir/file"));
  }
  EXPECT_TRUE(recorder.records().empty());
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
