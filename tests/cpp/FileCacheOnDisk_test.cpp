#include <gmock/gmock.h>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/FileCache/recoverMetadata.h"
#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"
#include "tests/cpp/SoftErrorRecorder.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

/// A cache as apps have it, over a directory of its own. No soft error may go unnoticed.
class FileCacheOnDisk : public testing::Test {
 protected:
  ~FileCacheOnDisk() override { EXPECT_THAT(takeErrors(), IsEmpty()); }

  std::vector<std::string> takeErrors() {
    std::vector<std::string> messages;
    for (const auto& record : recorder_.records()) {
      messages.push_back(record.message);
    }
    recorder_.records().clear();
    return messages;
  }
  void put(const std::string& key, const std::string& content) {
    cache_->insertAndLock(key);
    root_.write(key, content);
    cache_->commit(key);
  }
  std::string metadata() { return root_.read("metadata.json"); }

  SoftErrorRecorder recorder_;
  TemporaryDirectory root_;
  std::shared_ptr<IFileCache> cache_ = createFileCache(root_.path(), 10);
};

TEST_F(FileCacheOnDisk, evictsLockedEntriesOldestFirstAndNewOnesBeforeTheyArePromoted) {
  root_.write("metadata.json", R"({"entries":[{"key":"old","size":4,"lastAccess":10},)"
                               R"({"key":"older","size":4,"lastAccess":5}]})");
  root_.write("old", "1234");
  root_.write("older", "1234");
  root_.write("extra/older", "x");
  cache_->getAllMetas();
  put("new", "123");
  EXPECT_FALSE(root_.has("new")) << "adopted with access time 0";
  EXPECT_TRUE(root_.has("older"));

  cache_->insertAndLock("new");
  root_.write("new", "123");
  cache_->getCacheEntry("new");
  cache_->commit("new");
  EXPECT_FALSE(root_.has("older"));
  EXPECT_FALSE(root_.has("extra/older"));
  EXPECT_TRUE(root_.has("old"));
  EXPECT_EQ(7, cache_->getSize());
}

TEST_F(FileCacheOnDisk, doesNotFindKeysWithSpecialCharactersWhenItEvicts) {
  EXPECT_EQ(root_ / "k%:", cache_->insertAndLock("k:")->path);
  root_.write("k%:", "12345678901");
  cache_->commit("k:");
  EXPECT_NE(nullptr, cache_->getCacheEntry("k:"));
  EXPECT_EQ(11, cache_->getSize()) << "eviction has looked for k%%:";
  EXPECT_TRUE(cache_->remove("k:"));
  root_.write("a%/b", "1");
  EXPECT_EQ(root_ / "a%/b", cache_->getCacheEntry("a/b")->path);
}

/// Calls every operation that reloads.
std::vector<bool> callAll(IFileCache& cache) {
  cache.unlock("k");
  cache.commit("k", 1);
  cache.clear();
  return {cache.insertAndLock("k") == nullptr,
          cache.getCacheEntry("k") == nullptr,
          !cache.updateExtra("k", {1}),
          cache.getAllMetas().empty(),
          cache.memContains("k") == IFileCache::MemContainsStatus::Unknown,
          !cache.remove("k"),
          cache.getSize() == 0};
}

TEST_F(FileCacheOnDisk, answersNeutrallyWithOneReportEachWhenItCannotReload) {
  constexpr std::size_t operations = 10;
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
  std::filesystem::create_symlink("/proc/self/mem", root_ / "linked/metadata.json");
  for (const auto& [root, cause] : cases) {
    EXPECT_THAT(callAll(*createFileCache(root, 0)), testing::Each(true)) << root;
    const auto errors = takeErrors();
    EXPECT_EQ(operations, errors.size());
    EXPECT_THAT(errors, testing::Each(HasSubstr(": " + cause)));
  }
  EXPECT_EQ("kept", root_.read("damaged/k"));
  EXPECT_EQ("kept", root_.read("linked/k"));
  EXPECT_EQ("1", root_.read("file"));
}

/// Storage in which a cache is at work: it replaces a file just before it is renamed.
struct BusyFileIO : IFileIO {
  std::string readFile(const std::string& path) override { return real.readFile(path); }
  void writeFile(const std::string&, const std::string&) override {}
  void moveFile(const std::string& from, const std::string& to) override {
    real.writeFile(from, written);
    real.moveFile(from, to);
  }
  FileIO real;
  std::string written = R"({"entries":[]})";
};

TEST_F(FileCacheOnDisk, onlyMetadataThatCannotBeReadIsSetAside) {
  using Is = MetadataRecovery;
  const std::string file = root_ / "metadata.json";
  EXPECT_EQ(Is::NothingToMend, recoverMetadata(root_.path()));
  root_.write("metadata.json", "{");
  BusyFileIO busy;
  FilesystemOperations filesystem;
  EXPECT_EQ(Is::NothingToMend, recoverMetadata(root_.path(), busy, filesystem));
  EXPECT_EQ(busy.written, metadata());
  EXPECT_FALSE(root_.has(".metadata.json.damaged"));
  EXPECT_EQ(Is::NothingToMend, recoverMetadata(root_.path()));
  std::filesystem::remove(file);
  for (const char* inFolder : {"metadata.json/a", "metadata.json", "metadata.json/b"}) {
    root_.write(inFolder, "{");
    EXPECT_EQ(Is::SetAside, recoverMetadata(root_.path())) << inFolder;
    EXPECT_EQ(0, cache_->getSize());
    std::filesystem::remove(file);
  }
  EXPECT_TRUE(root_.has(".metadata.json.damaged/b"));
  std::filesystem::create_symlink("/proc/self/mem", file);
  EXPECT_THROW(recoverMetadata(root_.path()), std::runtime_error) << "it may be a good one";
  EXPECT_TRUE(root_.has("metadata.json"));
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
