#include "delivery/FileCache/FileCacheImpl.h"

#include <gtest/gtest.h>

#include "tests/cpp/Errors.h"
#include "tests/cpp/FileCacheCalls.h"
#include "tests/cpp/ObservedStorage.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

/// The entry "k%:" with extra bytes, and metadata that is as it should be.
class FileCacheImplTest : public testing::Test {
 protected:
  void SetUp() override {
    root_.write("k%:", "12345");
    root_.write("extra/k%:", "extra");
    root_.write("metadata.json", R"({"entries":[{"key":"k%:","size":5,"lastAccess":1}]})");
  }

  TemporaryDirectory root_;
  Observer observer_{root_.path()};
};

TEST_F(FileCacheImplTest, callsTheStorageInThisOrder) {
  const std::string reload = "isFile metadata.json, readFile metadata.json, listDirectory .";
  const std::string save = ", createDirectories ., writeFile metadata.json";
  const std::string expected[] = {
      reload + ", createDirectories ., exists extra, remove extra/k%:",
      "getSize k%:, " + reload + save,
      reload + save,
      reload + save,
      reload + ", exists k%:" + save,
      "exists k%:",
      reload + ", createDirectories extra, writeFile extra/k%:",
      reload + ", exists extra, isFile extra/k%:, readFile extra/k%:",
      reload,
      reload + ", isFile k%:, remove k%:, exists extra, remove extra/k%:" + save,
      reload,
      reload + ", removeAll .",
      "",
  };
  static_assert(std::size(expected) == std::size(kFileCacheCalls));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    SetUp();
    kFileCacheCalls[i].call(*observedCache(root_.path(), 6, observer_), "k:");
    EXPECT_EQ(expected[i], observer_.takeCalls()) << kFileCacheCalls[i].signature;
  }
}

TEST_F(FileCacheImplTest, refusesKeysThatAreNotForFilesBeforeAnythingIsCalled) {
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
  const auto cache = observedCache(root_.path(), 0, observer_);
  for (const auto& [key, quoted, reason] : cases) {
    for (const FileCacheCall& operation : kFileCacheCalls) {
      if (operation.takesKey() && operation.label != "memContains") {
        EXPECT_EQ("Refused the key '" + quoted + "': " + reason,
                  errorOf([&, &refused = key] { operation.call(*cache, refused); }))
            << operation.signature;
      }
    }
    EXPECT_EQ("", observer_.takeCalls());
    EXPECT_EQ(IFileCache::MemContainsStatus::Absent, cache->memContains(key));
    EXPECT_NE("", observer_.takeCalls()) << "it reloads, like other operations";
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
