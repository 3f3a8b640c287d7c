// Damage to the files that a model store keeps for itself.

#include <cerrno>

#include "delivery/FileNames.h"
#include "store/CheckedDocument.h"
#include "store/VersionIndex.h"
#include "tests/store/Samples.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;
using testing::ElementsAre;

/// Opening repairs the damage and reports it; the next store finds nothing to repair.
void expectRepaired(const Image& damaged, const std::string& name) {
  SimulatedDisk disk(damaged);
  for (const bool isFirst : {true, false}) {
    SoftErrors::count = 0;
    const auto store = openModels(disk);
    ASSERT_EQ(2, store->snapshot()->active);
    ASSERT_THAT(store->snapshot()->versions, ElementsAre(1, 2));
    ASSERT_EQ(isFirst && name != kLockName, SoftErrors::count > 0);
  }
}

class OwnFiles : public testing::Test {
 protected:
  /// The root with the text replaced everywhere in a document, and the checksum right.
  Image edited(const char* document, const std::string& from, const std::string& to) const {
    Image image = good_;
    std::string& text = image[document];
    for (std::size_t at; (at = text.find(from)) != std::string::npos;) {
      text.replace(at, from.size(), to);
    }
    text.erase(text.rfind(",\"crc32\""));
    text += ",\"crc32\":" + std::to_string(crc32(text)) + "}";
    return image;
  }

  const SoftErrors softErrors_;
  const Image good_ = rootWithTwoVersions();
  const std::vector<std::string> names_ = {kTableName, kIndexName, kMarkerName, kLockName};
};

TEST_F(OwnFiles, areRepairedHoweverTheyAreDamaged) {
  for (const std::string& name : names_) {
    for (std::size_t i = 0; i < good_.at(name).size(); ++i) {
      SCOPED_TRACE(name + ", byte " + std::to_string(i));
      Image cut = good_, flipped = good_;
      cut[name].resize(i);
      expectRepaired(cut, name);
      flipped[name][i] = static_cast<char>(flipped[name][i] ^ (1 << (i % 8)));
      expectRepaired(flipped, name);
    }
    Image directory = good_;
    directory.erase(name);
    directory[name + "/inside"] = "";
    expectRepaired(directory, name);
  }
}

TEST_F(OwnFiles, areRepairedIfUnreadableButNotForLackOfDescriptors) {
  for (const std::string& name : names_) {
    SimulatedDisk disk(good_);
    disk.failOnce("openForReading", name, EMFILE);
    if (name != kLockName) {
      EXPECT_EQ(StoreError::Reason::Io, reasonOf([&] { openModels(disk); }));
    }
    EXPECT_EQ(0, SoftErrors::count);
    EXPECT_EQ(good_.at(kTableName), disk.now()[kTableName]);
    disk.failOnce("read", name, EIO);
    EXPECT_EQ(2, openModels(disk)->snapshot()->active);
    SoftErrors::count = 0;
  }
}

TEST_F(OwnFiles, areRestoredFromTheIndexIfDigestsMatch) {
  Image image = good_;
  image.erase(kTableName);
  image[nameOf(filesOf(2)[0])][0] ^= 1;
  SimulatedDisk disk(image);
  const auto store = openModels(disk);
  EXPECT_THAT(store->snapshot()->versions, ElementsAre(1));
  EXPECT_EQ(1, store->snapshot()->active) << "the last intact version";
}

TEST_F(OwnFiles, thatAreLostCostNoVersionEvenIfTheyCannotBeReplaced) {
  Image image = good_;
  image.erase(kTableName);
  SimulatedDisk disk(image);
  disk.failOnce("rename", kTableName, ENOSPC);
  const auto store = openModels(disk);
  disk.failOnce("rename", kTableName, ENOSPC);
  EXPECT_EQ(StoreError::Reason::DiskFull, reasonOf([&] { store->activate(1); }));
  EXPECT_EQ(2, store->snapshot()->active);
  EXPECT_THAT(store->snapshot()->versions, ElementsAre(1, 2));
}

TEST_F(OwnFiles, ofANewerReleaseAreLeftAlone) {
  for (const char* name : {kMarkerName, kTableName}) {
    const Image newer = edited(name, "\"format\":1", "\"format\":2");
    SimulatedDisk disk(newer);
    EXPECT_THROW(openModels(disk), std::invalid_argument);
    EXPECT_EQ(newer.at(name), disk.now()[name]);
  }
}

TEST_F(OwnFiles, thatContradictThemselvesOrNameOtherFilesAreDamaged) {
  const std::string name = nameOf(filesOf(2)[0]), other = nameOf(filesOf(1)[0]);
  const std::string tooLong(256, 'x');
  for (const std::string to :
       {"../outside", "link/outside", ".lock", "extra", "", other.c_str(), tooLong.c_str()}) {
    SCOPED_TRACE(to);
    expectRepaired(edited(kTableName, name, to), kTableName);
  }
  expectRepaired(edited(kTableName, "\"active\":2", "\"active\":3"), kTableName);
  expectRepaired(edited(kTableName, "\"version\":1", "\"version\":2"), kTableName);
}

TEST_F(OwnFiles, listTheActiveVersionLastInTheIndex) {
  SimulatedDisk disk(good_);
  openModels(disk)->activate(1);
  const auto store = openModels(disk);
  store->begin(3, filesOf(2));  // Complete, but not active.
  const auto indexed = readIndex(disk.now()[kIndexName]);
  ASSERT_EQ(3u, indexed.size());
  EXPECT_EQ(1, indexed.back().number);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
