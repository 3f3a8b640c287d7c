#include "delivery/FileCache/CacheMetadata.h"

#include <gmock/gmock.h>

#include <limits>

#include "delivery/FileCache/CacheEvictor.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Entries = std::vector<std::pair<std::string, CacheMetadataEntry>>;
using testing::ElementsAre;

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

TEST(CacheMetadata, countsRepeatedNamesInTheTotalButKeepsTheFirst) {
  CacheMetadata metadata(Entries{{"a", {5, 1, false}}, {"a", {7, 2, false}}});
  EXPECT_EQ(12, metadata.getTotalSize());
  ASSERT_EQ(1u, metadata.getEntries().size());
  EXPECT_EQ(5, metadata.getEntries()[0].second.size);
  metadata.removeEntry("a");
  EXPECT_EQ(7, metadata.getTotalSize());
}

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

TEST(CacheMetadata, wrapsSumsOfAnySizes) {
  CacheMetadata metadata(Entries{{"a", {kMax, 1, false}}, {"b", {kMax, 2, false}}});
  EXPECT_EQ(-2, metadata.getTotalSize());
  metadata.setEntrySize("a", kMin);
  metadata.removeEntry("b");
  EXPECT_EQ(kMin, metadata.getTotalSize());
}

TEST(CacheEvictor, choosesTheOldestUntilTheRestFits) {
  const Entries entries{{"new", {40, 30, false}},
                        {"empty", {0, 5, false}},
                        {"old", {30, 10, true}},
                        {"adopted", {0, 0, false}},
                        {"mid", {30, 20, false}}};
  const struct {
    std::int64_t budget;
    std::vector<std::string> evicted;
  } cases[] = {
      {100, {}},
      {99, {"adopted", "empty", "old"}},
      {70, {"adopted", "empty", "old"}},
      {69, {"adopted", "empty", "old", "mid"}},
      {0, {"adopted", "empty", "old", "mid", "new"}},
      {-1, {"adopted", "empty", "old", "mid", "new"}},
  };
  const CacheMetadata metadata(entries);
  for (const auto& [budget, evicted] : cases) {
    EXPECT_EQ(evicted, CacheEvictor(budget).selectKeysToEvict(metadata)) << budget;
  }
  const CacheMetadata overflowing(Entries{{"a", {kMin, 1, false}}, {"b", {-1, 2, false}}});
  EXPECT_THAT(CacheEvictor(0).selectKeysToEvict(overflowing), ElementsAre("a"));
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
