// Roots that are not there, not readable or not writable, and what in them is not just files.
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
using testing::HasSubstr;
using testing::StartsWith;

class HostileDisk : public testing::Test {
 protected:
  /// The messages of the soft errors since the last time.
  std::vector<std::string> takeErrors() {
    std::vector<std::string> messages;
    for (const auto& record : recorder_.records()) {
      messages.push_back(record.message);
    }
    recorder_.records().clear();
    return messages;
  }

  TemporaryDirectory root_;
  SoftErrorRecorder recorder_;
  std::shared_ptr<IFileCache> cache_ = createFileCache(root_.path(), 1000);
};

TEST_F(HostileDisk, answersNeutrallyWithOneReportIfItCannotReload) {
  const struct {
    std::string root, cause;
  } cases[] = {
      {root_ / "gone", "Could not iterate over '" + (root_ / "gone") + "' with error "},
      {root_ / "file", "Could not iterate over '" + (root_ / "file") + "' with error "},
      {root_ / "damaged", "Deserializing failed: '{\"ent' with exception: "},
      {root_ / "linked", "Could not open file."},
  };
  root_.write("file", "1");
  root_.write("damaged/metadata.json", "{\"ent");
  root_.write("damaged/k", "kept");
  root_.write("linked/k", "kept");
  boost::filesystem::create_symlink("/proc/self/mem", root_ / "linked/metadata.json");
  for (const auto& [root, cause] : cases) {
    const auto cache = createFileCache(root, 0);
    for (const FileCacheCall& operation : kFileCacheCalls) {
      if (operation.label == "flush" || operation.label == "getCacheEntryWithoutPromotion" ||
          operation.signature == "commit(const std::string &)") {
        continue;  // Asks for the key's file first, or for nothing else.
      }
      EXPECT_TRUE(operation.call(*cache, "k")) << operation.signature << root;
      EXPECT_THAT(takeErrors(),
                  ElementsAre(StartsWith("Error for " + operation.label + ": " + cause)))
          << root;
    }
  }
  EXPECT_EQ("kept", root_.read("damaged/k"));
  EXPECT_EQ("kept", root_.read("linked/k"));
  EXPECT_EQ("1", root_.read("file"));
}

TEST_F(HostileDisk, reportsNamesThatAreTooLong) {
  root_.write("k", "1");
  for (const FileCacheCall& operation : kFileCacheCalls) {
    if (operation.signature.find("getCacheEntry") == 0 || operation.label == "remove") {
      EXPECT_TRUE(operation.call(*cache_, std::string(300, 'x')));
      EXPECT_THAT(takeErrors(), ElementsAre(HasSubstr("File name too long")));
    }
  }
  EXPECT_EQ(1, cache_->getSize());
}

TEST_F(HostileDisk, removesLinksAndNotTheirTargets) {
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
  EXPECT_THAT(takeErrors(), ElementsAre());
}

TEST_F(HostileDisk, setsMetadataAsideThatIsDamaged) {
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
  EXPECT_THROW(recoverMetadata(root_.path()), std::runtime_error) << "it may be a good one";
  EXPECT_TRUE(root_.has("metadata.json"));
}

TEST_F(HostileDisk, keepsGoodMetadataThatAppearsMeanwhile) {
  const std::string first = R"({"entries":[]})", second = R"({"entries": []})";
  for (const bool isReplacedAgain : {false, true}) {
    root_.write("metadata.json", "{");
    Observer observer(root_.path());
    observer.hook = [&, wasMoved = false](auto& operation) mutable {
      if (operation == "moveFile" && !std::exchange(wasMoved, true)) {
        root_.write("metadata.json", first);
      } else if (operation == "readFile" && wasMoved && isReplacedAgain) {
        root_.write("metadata.json", second);
      }
    };
    ObservedFileIO io(observer);
    ObservedFilesystem filesystem(observer);
    EXPECT_EQ(MetadataRecovery::NothingToMend, recoverMetadata(root_.path(), io, filesystem));
    EXPECT_EQ(isReplacedAgain ? second : first, root_.read("metadata.json"));
    EXPECT_FALSE(root_.has(".metadata.json.damaged"));
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
