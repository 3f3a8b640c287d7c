// What 32 bits do not hold. Runs everywhere, and says most on 32-bit targets.

#include <gtest/gtest.h>

#include "delivery/FileCache/createFileCache.h"
#include "tests/cpp/SoftErrorRecorder.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

void writeSparse(const TemporaryDirectory& root, const std::string& name, std::uintmax_t size) {
  root.write(name, "");
  boost::filesystem::resize_file(root / name, size);
}

TEST(Wide, countsSizesTotalsAndTimesInFull) {
  const TemporaryDirectory root;
  const SoftErrorRecorder recorder;
  // Cut to 32 bits, the younger one would be the older, and the total within the budget.
  root.write("metadata.json", R"({"entries":[{"key":"old","size":5000000000,"lastAccess":5},)"
                              R"({"key":"young","size":5000000000,"lastAccess":4294967297}]})");
  writeSparse(root, "old", 5'000'000'000);
  writeSparse(root, "young", 5'000'000'000);
  const auto cache = createFileCache(root.path(), 12'000'000'000);
  EXPECT_EQ(10'000'000'000, cache->getSize());
  writeSparse(root, "directory/new", 4'500'000'000);
  EXPECT_NE(nullptr, cache->getCacheEntry("directory"));
  cache->commit("directory");
  EXPECT_FALSE(root.has("old"));
  EXPECT_EQ(9'500'000'000, cache->getSize());
  EXPECT_NE(std::string::npos,
            root.read("metadata.json").find("5000000000,\"lastAccess\":4294967297"));
  EXPECT_TRUE(recorder.records().empty());
}

TEST(Wide, refusesAFileTooLargeForTheAddressSpace) {
  if (sizeof(std::size_t) > 4) {
    GTEST_SKIP() << "there is room";
  }
  const TemporaryDirectory root;
  const SoftErrorRecorder recorder;
  for (const auto size : {0x80000000ull, 0x100000001ull}) {
    writeSparse(root, "metadata.json", size);
    EXPECT_EQ(0, createFileCache(root.path(), 1)->getSize());
    EXPECT_EQ("Error for getSize: Could not open file.", recorder.records().back().message);
  }
  EXPECT_EQ(2u, recorder.records().size());
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
