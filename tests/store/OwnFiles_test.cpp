// What becomes of a store whose own files are damaged in every way that a loop can reach.

#include <gmock/gmock.h>

#include <cerrno>

#include "delivery/FileNames.h"
#include "store/CheckedDocument.h"
#include "store/DiskModelStore.h"
#include "store/VersionIndex.h"
#include "tests/store/Samples.h"
#include "tests/store/SimulatedDisk.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;
using testing::ElementsAre;

std::unique_ptr<ModelStore> openStore(SimulatedDisk& disk) {
  return DiskModelStore::open(kRoot, kCapability, 3 * kVersionSize, disk.environment());
}

/// A root in which version 2 is active and 1 is complete.
Image filledRoot() {
  SimulatedDisk disk;
  const auto store = openStore(disk);
  update(*store, 1);
  update(*store, 2);
  store->close();
  return disk.now();
}

/// What was damaged is back at once, which is reported, and the next store has nothing to mend.
void expectMended(const Image& damaged, const std::string& name) {
  SimulatedDisk disk(damaged);
  for (const bool isFirst : {true, false}) {
    SoftErrors::count = 0;
    const auto store = openStore(disk);
    ASSERT_EQ(2, store->snapshot()->active);
    ASSERT_THAT(store->snapshot()->versions, ElementsAre(1, 2));
    ASSERT_EQ(isFirst && name != kLockName, SoftErrors::count > 0);
  }
}

/// The text of a document with the checksum put right.
std::string checked(std::string text) {
  text.erase(text.rfind(",\"crc32\""));
  return text + ",\"crc32\":" + std::to_string(crc32(text)) + "}";
}

class OwnFile : public testing::TestWithParam<const char*> {
 protected:
  const SoftErrors softErrors_;
  const Image good_ = filledRoot();
};
INSTANTIATE_TEST_SUITE_P(, OwnFile,
                         testing::Values(kTableName, kIndexName, kMarkerName, kLockName));

TEST_P(OwnFile, isMendedHoweverItIsDamaged) {
  for (std::size_t i = 0; i < good_.at(GetParam()).size(); ++i) {
    SCOPED_TRACE(i);
    Image cut = good_, flipped = good_, directory = good_;
    cut[GetParam()].resize(i);
    expectMended(cut, GetParam());
    flipped[GetParam()][i] = static_cast<char>(flipped[GetParam()][i] ^ (1 << (i % 8)));
    expectMended(flipped, GetParam());
    directory.erase(GetParam());
    directory[GetParam() + std::string("/inside")] = "";
    i == 0 ? expectMended(directory, GetParam()) : void();
  }
}

TEST_P(OwnFile, isDamagedIfItCannotBeReadButNotForLackOfDescriptors) {
  SimulatedDisk disk(good_);
  disk.failOnce("openForReading", GetParam(), EMFILE);
  if (GetParam() != std::string(kLockName)) {
    EXPECT_EQ(StoreError::Reason::Io, reasonOf([&] { openStore(disk); }));
  }
  EXPECT_EQ(0, SoftErrors::count);
  EXPECT_EQ(good_.at(kTableName), disk.now()[kTableName]);
  disk.failOnce("read", GetParam(), EIO);
  EXPECT_EQ(2, openStore(disk)->snapshot()->active);
}

TEST(OwnFiles, comeBackFromTheIndexAsFarAsDigestsConfirm) {
  const SoftErrors softErrors;
  Image image = filledRoot();
  image.erase(kTableName);
  image[nameOf(filesOf(2)[0])][0] ^= 1;
  SimulatedDisk disk(image);
  const auto store = openStore(disk);
  EXPECT_THAT(store->snapshot()->versions, ElementsAre(1));
  EXPECT_EQ(1, store->snapshot()->active) << "the last one that is whole";
}

TEST(OwnFiles, ofANewerReleaseAreLeftAlone) {
  const SoftErrors softErrors;
  for (const char* name : {kMarkerName, kTableName}) {
    Image image = filledRoot();
    std::string text = image[name];
    text.replace(text.find("\"format\":1"), 10, "\"format\":2");
    image[name] = checked(text);
    SimulatedDisk disk(image);
    EXPECT_THROW(openStore(disk), std::invalid_argument);
    EXPECT_EQ(image[name], disk.now()[name]);
  }
}

TEST(OwnFiles, thatContradictThemselvesOrLeadToNoEntriesAreDamaged) {
  const SoftErrors softErrors;
  const Image good = filledRoot();
  const std::string name = nameOf(filesOf(2)[0]), other = nameOf(filesOf(1)[0]);
  const std::pair<std::string, std::string> changes[] = {{name, "../outside"},
                                                         {name, "link/outside"},
                                                         {name, ".lock"},
                                                         {name, "extra"},
                                                         {name, ""},
                                                         {name, other},
                                                         {"\"active\":2", "\"active\":3"},
                                                         {"\"version\":1", "\"version\":2"}};
  for (const auto& [from, to] : changes) {
    SCOPED_TRACE(to);
    Image image = good;
    std::string& text = image[kTableName];
    for (std::size_t at; (at = text.find(from)) != std::string::npos;) {
      text.replace(at, from.size(), to);
    }
    text = checked(text);
    expectMended(image, kTableName);
  }
}

TEST(OwnFiles, giveTheIndexWithTheActiveVersionLast) {
  const SoftErrors softErrors;
  SimulatedDisk disk(filledRoot());
  openStore(disk)->activate(1);
  const auto store = openStore(disk);
  store->begin(3, filesOf(2));  // Complete, but not active.
  const auto indexed = readIndex(disk.now()[kIndexName]);
  ASSERT_EQ(3u, indexed.size());
  EXPECT_EQ(1, indexed.back().number);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
