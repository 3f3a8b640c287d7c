#include "delivery/FileCache/CacheMetadata.h"

#include <gmock/gmock.h>

#include <limits>

#include "delivery/FileCache/CacheEvictor.h"
#include "delivery/FileCache/CacheMetadataFilesystemSynchronizer.h"
#include "tests/cpp/Mocks.h"

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

struct MockMetadata : ICacheMetadata {
  MOCK_METHOD(std::int64_t, getTotalSize, (), (const, override));
  MOCK_METHOD(void, lockEntry, (const std::string&), (override));
  MOCK_METHOD(void, unlockEntry, (const std::string&), (override));
  MOCK_METHOD(void, setEntrySize, (const std::string&, std::int64_t), (override));
  MOCK_METHOD(void, touchEntry, (const std::string&), (override));
  MOCK_METHOD(bool, hasEntry, (const std::string&), (const, override));
  MOCK_METHOD(void, removeEntry, (const std::string&), (override));
  MOCK_METHOD(void, clearEntries, (), (override));
  MOCK_METHOD(Entries, getEntries, (), (const, override));
};

TEST(Synchronizer, treatsRecordsOfOneNameAlike) {
  auto filesystem = std::make_shared<testing::NiceMock<MockFilesystem>>();
  CacheMetadataFilesystemSynchronizer synchronizer(filesystem);
  const Entries twice{{"a", {5, 1, false}}, {"b", {9, 2, false}}, {"a", {7, 2, false}}};
  const struct {
    Names names;
    std::int64_t total;  // 0: as it was passed in.
  } cases[] = {{{"a", "b"}, 0}, {{"a"}, 12}, {{"b", "c", ".d", "x"}, 10}, {{"a", "b", "c"}, 22}};
  for (const auto& [names, total] : cases) {
    auto metadata = std::make_unique<testing::NiceMock<MockMetadata>>();
    ON_CALL(*metadata, getEntries).WillByDefault(testing::Return(twice));
    ON_CALL(*filesystem, listDirectory).WillByDefault(testing::Return(names));
    ON_CALL(*filesystem, getSize(Path("/r/c"))).WillByDefault(testing::Return(1));
    const auto result = synchronizer.synchronize(std::move(metadata), "/r", {"x"});
    EXPECT_EQ(total != 0, result.changed);
    EXPECT_EQ(total, result.metadata->getTotalSize()) << testing::PrintToString(names);
  }
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
