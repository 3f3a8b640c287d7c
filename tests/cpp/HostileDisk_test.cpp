// Hostile keys, missing roots, damaged metadata, and links among the entries.
#include <gmock/gmock.h>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/FileCache/recoverMetadata.h"
#include "tests/cpp/FileCacheCalls.h"
#include "tests/cpp/ObservedStorage.h"
#include "tests/cpp/SoftErrorRecorder.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

struct HostileDisk : testing::Test {
  TemporaryDirectory root_;
  SoftErrorRecorder errors_;
  std::shared_ptr<IFileCache> cache_ = createFileCache(root_.path(), 1000);
};

TEST_F(HostileDisk, refusesKeysWithoutAFileNameBeforeTouchingTheRoot) {
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
  root_.write("k", "not recorded yet");
  for (const auto& [key, quoted, reason] : cases) {
    for (const auto& [result, signature, label, call] : kFileCacheCalls) {
      if (signature.find("string") != std::string::npos && label != "memContains") {
        EXPECT_TRUE(call(*cache_, key)) << signature;
        EXPECT_THAT(
            errors_.takeMessages(),
            ElementsAre("Error for " + label + ": Refused the key '" + quoted + "': " + reason));
      }
    }
    EXPECT_FALSE(root_.has("metadata.json"));
    EXPECT_EQ(IFileCache::MemContainsStatus::Absent, cache_->memContains(key));
    EXPECT_TRUE(boost::filesystem::remove(root_ / "metadata.json")) << "memContains reloads first";
  }
}

TEST_F(HostileDisk, clearRemovesTheRootWithoutWhichReloadsFail) {
  cache_->clear();
  for (const auto& [result, signature, label, call] : kFileCacheCalls) {
    if (label != "flush" && label != "getCacheEntryWithoutPromotion") {  // These do not reload.
      EXPECT_TRUE(call(*cache_, "k")) << signature;
      EXPECT_THAT(errors_.takeMessages(),
                  ElementsAre(StartsWith("Error for " + label + ": Could not iterate over '")));
    }
  }
  cache_->flushExtra();
  EXPECT_EQ(nullptr, cache_->getCacheEntryWithoutPromotion("k"));
  EXPECT_THAT(errors_.takeMessages(), ElementsAre());
}

TEST_F(HostileDisk, removesLinksButNotTheirTargets) {
  const TemporaryDirectory outside;
  outside.write("file", "outside");
  outside.write("dir/file", "outside");
  const auto cache = createFileCache(root_.path(), 0);
  for (const bool evict : {false, true}) {
    root_.write("entry/own", "1");
    for (const std::string link : {"file", "entry/file"}) {
      boost::filesystem::create_symlink(outside / "file", root_ / link);
    }
    for (const std::string link : {"dir", "entry/dir", "slash%", "dot%"}) {
      boost::filesystem::create_symlink(outside / "dir", root_ / link);
    }
    if (evict) {
      cache->commit("dir");
    }
    for (const std::string key : {"file", "dir", "entry", "slash/", "dot/."}) {
      EXPECT_NE(evict, cache->remove(key)) << key;
    }
    EXPECT_EQ("outsideoutside", outside.read("file") + outside.read("dir/file"));
  }
  EXPECT_THAT(errors_.takeMessages(), ElementsAre());
}

TEST_F(HostileDisk, recoverySetsDamagedMetadataAside) {
  using Is = MetadataRecovery;
  const std::string file = root_ / "metadata.json";
  EXPECT_EQ(Is::NothingToMend, recoverMetadata(root_.path()));
  for (const char* inFolder : {"metadata.json/a", "metadata.json", "metadata.json/b"}) {
    root_.write(inFolder, "{");
    EXPECT_EQ(Is::SetAside, recoverMetadata(root_.path())) << inFolder;
    EXPECT_EQ(0, cache_->getSize());
    boost::filesystem::remove(file);
  }
  EXPECT_TRUE(root_.has(".metadata.json.damaged/b"));
  boost::filesystem::create_symlink("/proc/self/mem", file);
  EXPECT_THROW(recoverMetadata(root_.path()), std::runtime_error) << "unreadable, maybe intact";
  EXPECT_TRUE(root_.has("metadata.json"));
}

TEST_F(HostileDisk, recoveryKeepsGoodMetadataWrittenMeanwhile) {
  const std::string first = R"({"entries":[]})", second = R"({"entries": []})";
  for (const bool isReplacedAgain : {false, true}) {
    root_.write("metadata.json", "{");
    const Hook hook = [&, wasMoved = false](auto& operation) mutable {
      if (operation == "moveFile" && !std::exchange(wasMoved, true)) {
        root_.write("metadata.json", first);
      } else if (operation == "readFile" && wasMoved && isReplacedAgain) {
        root_.write("metadata.json", second);
      }
    };
    ObservedFileIO io(hook);
    ObservedFilesystem filesystem(hook);
    EXPECT_EQ(MetadataRecovery::NothingToMend, recoverMetadata(root_.path(), io, filesystem));
    EXPECT_EQ(isReplacedAgain ? second : first, root_.read("metadata.json"));
    EXPECT_FALSE(root_.has(".metadata.json.damaged"));
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
