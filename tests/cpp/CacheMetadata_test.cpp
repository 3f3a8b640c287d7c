#include "delivery/FileCache/CacheMetadata.h"

#include <gmock/gmock.h>

#include <limits>

#include "delivery/FileCache/CacheEvictor.h"
#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/FileCache/createFileCache.h"
#include "tests/cpp/Errors.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Entries = std::vector<std::pair<std::string, CacheMetadataEntry>>;

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

TEST(CacheMetadata, lockingDatesOnlyNewEntries) {
  CacheMetadata metadata(Entries{{"old", {5, 1, false}}});
  const auto entry = [&] { return metadata.getEntries().at(0).second; };
  metadata.lockEntry("old");
  EXPECT_EQ(std::tuple(5, 1, true), std::tuple(entry().size, entry().lastAccess, entry().locked));
  metadata.removeEntry("old");
  metadata.lockEntry("new");
  EXPECT_TRUE(entry().locked);
  EXPECT_GT(entry().lastAccess, 1'600'000'000'000);
  metadata.unlockEntry("new");
  EXPECT_FALSE(entry().locked);
}

TEST(CacheMetadata, keepsTheFirstOfRepeatedNamesButCountsAllInAWrappingTotal) {
  CacheMetadata metadata(Entries{{"a", {kMax, 1, false}}, {"a", {7, 2, false}}});
  EXPECT_EQ(kMin + 6, metadata.getTotalSize());
  metadata.setEntrySize("a", kMin);
  metadata.removeEntry("a");
  EXPECT_EQ(7, metadata.getTotalSize());
}

/// Another implementation, whose records cannot be read.
struct UnreadableMetadata : ICacheMetadata {
  explicit UnreadableMetadata(bool isKnown) : throwsKnown(isKnown) {}
  std::int64_t getTotalSize() const override { return 0; }
  void lockEntry(const std::string&) override {}
  void unlockEntry(const std::string&) override {}
  void setEntrySize(const std::string&, std::int64_t) override {}
  void touchEntry(const std::string&) override {}
  bool hasEntry(const std::string&) const override { return true; }
  void removeEntry(const std::string&) override {}
  void clearEntries() override {}
  Entries getEntries() const override { throwsKnown ? throw std::runtime_error("x") : throw 1; }
  const bool throwsKnown;
};

TEST(CacheMetadataSerializer, describesWhatAnotherImplementationOfMetadataThrows) {
  EXPECT_EQ("Serializing the cache metadata failed with exception: x",
            errorOf([&] { CacheMetadataSerializer().serialize(UnreadableMetadata(true)); }));
  EXPECT_EQ("Serializing the cache descriptor failed",
            errorOf([&] { CacheMetadataSerializer().serialize(UnreadableMetadata(false)); }));
}

TEST(CacheEvictor, evictsLockedEntriesTooUntilTheRestFits) {
  const CacheMetadata metadata(Entries{{"a", {kMin, 1, true}}, {"b", {-1, 2, false}}});
  EXPECT_EQ(std::vector<std::string>{"a"}, CacheEvictor(0).selectKeysToEvict(metadata));
}

TEST(CacheMetadata, holdsSizesTotalsAndTimesBeyond32Bits) {
  const TemporaryDirectory root;
  SoftErrorRecorder errors;
  const auto writeSparse = [&root](const std::string& name, std::uintmax_t size) {
    root.write(name, "");
    boost::filesystem::resize_file(root / name, size);
  };
  // Cut to 32 bits, the younger one would be the older, and the total within the budget.
  root.write("metadata.json", R"({"entries":[{"key":"old","size":5000000000,"lastAccess":5},)"
                              R"({"key":"young","size":5000000000,"lastAccess":4294967297}]})");
  writeSparse("old", 5'000'000'000);
  writeSparse("young", 5'000'000'000);
  const auto cache = createFileCache(root.path(), 12'000'000'000);
  EXPECT_EQ(10'000'000'000, cache->getSize());
  writeSparse("directory/new", 4'500'000'000);
  EXPECT_NE(nullptr, cache->getCacheEntry("directory"));
  cache->commit("directory");
  EXPECT_FALSE(root.has("old"));
  EXPECT_EQ(9'500'000'000, cache->getSize());
  EXPECT_THAT(root.read("metadata.json"),
              testing::HasSubstr("5000000000,\"lastAccess\":4294967297"));
  EXPECT_THAT(errors.takeMessages(), testing::IsEmpty());
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
