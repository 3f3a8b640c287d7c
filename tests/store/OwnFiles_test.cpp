// What becomes of a store whose own files are damaged in every way that a loop can reach.

#include <gmock/gmock.h>

#include <functional>

#include "delivery/FileNames.h"
#include "store/CheckedDocument.h"
#include "store/DiskFileStore.h"
#include "store/DiskModelStore.h"
#include "store/VersionIndex.h"
#include "tests/store/Samples.h"
#include "tests/store/SimulatedDisk.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;
using testing::ElementsAre;

constexpr const char* kRoot = "/root";

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

class OwnFile : public testing::TestWithParam<const char*> {
 protected:
  const SoftErrors softErrors_;
  const Image good_ = filledRoot();
};
INSTANTIATE_TEST_SUITE_P(, OwnFile,
                         testing::Values(kTableName, kIndexName, kMarkerName, kLockName));

TEST_P(OwnFile, isMendedWhereverItIsCut) {
  for (std::size_t i = 0; i < good_.at(GetParam()).size(); ++i) {
    SCOPED_TRACE(i);
    Image image = good_;
    image[GetParam()].resize(i);
    expectMended(image, GetParam());
  }
}

TEST_P(OwnFile, isMendedWhicheverBitIsFlipped) {
  for (std::size_t i = 0; i < good_.at(GetParam()).size(); ++i) {
    SCOPED_TRACE(i);
    Image image = good_;
    image[GetParam()][i] = static_cast<char>(image[GetParam()][i] ^ (1 << (i % 8)));
    expectMended(image, GetParam());
  }
}

TEST_P(OwnFile, isMendedIfADirectoryIsInItsPlace) {
  Image image = good_;
  image.erase(GetParam());
  image[GetParam() + std::string("/inside")] = "";
  expectMended(image, GetParam());
}

TEST_P(OwnFile, isMendedIfItCannotBeRead) {
  SimulatedDisk disk(good_);
  disk.hook = [](std::string_view call, const std::string& name) {
    if (call == "read" && name == GetParam()) {
      throw StoreError::ofSystem("simulate", name, EIO, false);
    }
  };
  EXPECT_EQ(2, openStore(disk)->snapshot()->active);
}

TEST_P(OwnFile, isNotTakenToBeDamagedByAProcessShortOfDescriptors) {
  SimulatedDisk disk(good_);
  disk.hook = [](std::string_view call, const std::string& name) {
    if (call == "openForReading" && name == GetParam()) {
      throw StoreError::ofSystem("simulate", name, EMFILE, false);
    }
  };
  if (GetParam() != std::string(kLockName)) {
    EXPECT_EQ(StoreError::Reason::Io, reasonOf([&] { openStore(disk); }));
  }
  disk.hook = [](auto, auto&) {};
  EXPECT_EQ(0, SoftErrors::count);
  EXPECT_EQ(good_.at(kTableName), disk.now()[kTableName]);
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

TEST(OwnFiles, ofAnEarlierReleaseComeBackFromTheIndex) {
  const SoftErrors softErrors;
  Image image = filledRoot();
  image.erase(kMarkerName);
  image[kTableName] = "capability FACE_TRACKING\nsequence 1\nversion 2\ncheck 0\n";
  image["extra/"] = "";
  image["extra/.versions"] = image[kTableName];
  image["metadata.json"] = R"({"entries":[]})";
  expectMended(image, kTableName);
}

TEST(OwnFiles, ofANewerReleaseAreLeftAlone) {
  const SoftErrors softErrors;
  for (const char* name : {kMarkerName, kTableName}) {
    Image image = filledRoot();
    std::string text = image[name];
    text.replace(text.find("\"format\":1"), 10, "\"format\":2");
    text.erase(text.rfind(",\"crc32\""));
    image[name] = text + ",\"crc32\":" + std::to_string(crc32(text)) + "}";
    SimulatedDisk disk(image);
    EXPECT_THROW(openStore(disk), std::invalid_argument);
    EXPECT_EQ(image[name], disk.now()[name]);
  }
}

TEST(OwnFiles, leadToNothingButEntries) {
  const SoftErrors softErrors;
  const Image good = filledRoot();
  const std::string name = nameOf(filesOf(2)[0]);
  for (const std::string other : {"../outside", ".lock", "extra", "", "metadata.json"}) {
    Image image = good;
    std::string text = image[kTableName];
    for (std::size_t at; (at = text.find(name)) != std::string::npos;) {
      text.replace(at, name.size(), other);
    }
    text.erase(text.rfind(",\"crc32\""));
    image[kTableName] = text + ",\"crc32\":" + std::to_string(crc32(text)) + "}";
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

TEST(OwnFiles, ofFilesAreMendedToo) {
  const SoftErrors softErrors;
  SimulatedDisk first;
  DiskFileStore::open(kRoot, 10, first.environment());
  Image image = first.now();
  image[kMarkerName].pop_back();
  SimulatedDisk disk(image);
  DiskFileStore::open(kRoot, 10, disk.environment());
  EXPECT_EQ(1, SoftErrors::count);
  EXPECT_EQ(first.now()[kMarkerName], disk.now()[kMarkerName]);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
