#include "delivery/FileCache/CacheMetadata.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "delivery/FileCache/CacheEvictor.h"
#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "tests/cpp/Errors.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Entries = std::vector<std::pair<std::string, CacheMetadataEntry>>;

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

TEST(CacheMetadata, locksWithoutRefreshing) {
  CacheMetadata metadata(Entries{{"a", {5, 1, false}}});
  metadata.lockEntry("a");
  const auto entry = metadata.getEntries().at(0).second;
  EXPECT_EQ(std::make_tuple(5, 1, true),
            std::make_tuple(entry.size, entry.lastAccess, entry.locked));
  metadata.removeEntry("a");
  metadata.lockEntry("b");
  EXPECT_TRUE(metadata.getEntries().at(0).second.locked);
  EXPECT_GT(metadata.getEntries().at(0).second.lastAccess, 1'600'000'000'000);
  metadata.unlockEntry("b");
  EXPECT_FALSE(metadata.getEntries().at(0).second.locked);
}

TEST(CacheMetadata, countsRepeatedNamesInAWrappingTotalButKeepsTheFirst) {
  CacheMetadata metadata(Entries{{"a", {kMax, 1, false}}, {"a", {7, 2, false}}});
  EXPECT_EQ(kMin + 6, metadata.getTotalSize());
  metadata.setEntrySize("a", kMin);
  metadata.removeEntry("a");
  EXPECT_EQ(7, metadata.getTotalSize());
}

/// What a replacement of CacheMetadata may be like: no more than its records.
struct OtherMetadata : ICacheMetadata {
  explicit OtherMetadata(std::function<Entries()> records) : getRecords(std::move(records)) {}
  std::int64_t getTotalSize() const override { return 0; }
  void lockEntry(const std::string&) override {}
  void unlockEntry(const std::string&) override {}
  void setEntrySize(const std::string&, std::int64_t) override {}
  void touchEntry(const std::string&) override {}
  bool hasEntry(const std::string&) const override { return true; }
  void removeEntry(const std::string&) override {}
  void clearEntries() override {}
  Entries getEntries() const override { return getRecords(); }
  std::function<Entries()> getRecords;
};

TEST(CacheMetadataSerializer, tellsWhatAReplacementOfTheMetadataThrew) {
  const auto errorOfSerializing = [](std::function<Entries()> records) {
    return errorOf([&] { CacheMetadataSerializer().serialize(OtherMetadata(records)); });
  };
  EXPECT_EQ("Serializing the cache metadata failed with exception: x",
            errorOfSerializing([]() -> Entries { throw std::runtime_error("x"); }));
  EXPECT_EQ("Serializing the cache descriptor failed",
            errorOfSerializing([]() -> Entries { throw 1; }));
}

TEST(CacheEvictor, evictsUntilTheRestFitsWhateverTheSizes) {
  const CacheMetadata metadata(Entries{{"a", {kMin, 1, true}}, {"b", {-1, 2, false}}});
  EXPECT_EQ(std::vector<std::string>{"a"}, CacheEvictor(0).selectKeysToEvict(metadata));
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
