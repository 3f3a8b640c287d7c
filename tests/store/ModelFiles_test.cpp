// Model files: which are deleted to make room, which count as damaged, and which are adopted.

#include <cerrno>
#include <functional>

#include "tests/store/Samples.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using ModelFiles = ModelStoreTest;

TEST_F(ModelFiles, ofTheLeastRecentlyActiveVersionMakeRoomThenStrayOnes) {
  getVersions({1, 2, 3});
  store_->activate(1);
  reopenWith([](Image& image) { image["stray"] = "0123456789"; }, kTwoVersions + 2 * kSize + 10);
  store_->begin(4, filesOf(4));
  EXPECT_THAT(versions(), ElementsAre(1, 3));
  EXPECT_TRUE(has("stray"));
  store_->setMaxSizeBytes(kTwoVersions + 9);
  store_->begin(4, filesOf(4));
  EXPECT_THAT(versions(), ElementsAre(1));
  EXPECT_FALSE(has("stray"));
  expectActive(1);
}

TEST_F(ModelFiles, stayIfTheUpdateAndTheActiveVersionExceedTheBudget) {
  getVersions({1});
  store_->setMaxSizeBytes(kTwoVersions - 1);
  const StoreError error = errorOf([&] { store_->begin(2, files2_); });
  EXPECT_EQ(Reason::NoRoom, error.reason());
  EXPECT_EQ(kTwoVersions, error.room().value().needed);
  EXPECT_EQ(kTwoVersions - 1, error.room().value().budget);
  EXPECT_THAT(error.what(), HasSubstr("600 together with the active version 1"));
  std::vector<ModelFile> overflowing = files1_;
  overflowing[0] = {files1_[0].type(), INT64_MAX, sha256("a")};
  overflowing[1] = {files1_[1].type(), INT64_MAX, sha256("b")};
  EXPECT_EQ(Reason::NoRoom, reasonOf([&] { store_->begin(2, overflowing); }));
}

TEST_F(ModelFiles, areDeletedFromAFullDiskIfThatMakesEnoughRoom) {
  getVersions({1, 2});
  open(100 * kVersionSize);
  disk_.free = 1;
  std::vector<ModelFile> large = files2_;
  large[0] = fileOf(large[0].type(), std::string(1000, 'x'));
  EXPECT_EQ(Reason::DiskFull, reasonOf([&] { store_->begin(3, large); }));
  EXPECT_THAT(versions(), ElementsAre(1, 2));
  store_->begin(3, filesOf(3));
  EXPECT_THAT(versions(), ElementsAre(2));
}

TEST_F(ModelFiles, ofTheActiveVersionMakeRoomOnlyIfAllowedAndNeeded) {
  getVersions({1});
  store_->begin(2, files2_, Room::GiveUpActive);
  EXPECT_EQ(1, active()) << "there was room";
  store_->setMaxSizeBytes(kVersionSize);
  disk_.hook = [this](std::string_view call, const std::string& name) {
    EXPECT_FALSE(call == "remove" && name == nameOf(files1_[0]) && active())
        << "a snapshot names a deleted file";
  };
  const auto update = store_->begin(2, files2_, Room::GiveUpActive);
  EXPECT_EQ(std::nullopt, active());
  EXPECT_THAT(update->missing(), ElementsAre(files2_[0], files2_[1])) << "shared files stay";
  download(*update, files2_[0], 2);
  download(*update, files2_[1], 2);
  update->activate();
  expectActive(2);
  EXPECT_THROW(update->missing(), UsageError) << "it has ended";
}

TEST_F(ModelFiles, areTrimmedExceptForTheActiveVersionAndThoseNamed) {
  getVersions({1, 2, 3});
  store_->trimExcept({1, 9});
  EXPECT_THAT(versions(), ElementsAre(1, 3));
  store_->deactivate();
  store_->trimExcept({});
  EXPECT_THAT(versions(), ElementsAre(1, 3)) << "nothing would be left";
  EXPECT_TRUE(store_->verify().empty());
}

TEST_F(ModelFiles, ofUnfinishedUpdatesAreTrimmedUnlessOneIsRunning) {
  reopenWith([](Image& image) { image["stray"] = "kept"; });
  auto update = store_->begin(2, files2_);
  download(*update, files2_[0], 2);
  store_->trimExcept({});
  EXPECT_TRUE(has(nameOf(files2_[0])) && has(".part-" + nameOf(files2_[1])));
  update->close();
  store_->trimExcept({});
  EXPECT_FALSE(has(nameOf(files2_[0])) || has(".part-" + nameOf(files2_[1])));
  EXPECT_TRUE(has("stray"));
}

TEST_F(ModelFiles, thatAreDamagedAreFetchedAgain) {
  const std::string name = nameOf(files2_[0]);
  const std::function<void()> damages[] = {
      [&] { reopenWith([&](Image& image) { image[name][5] ^= 1; }); },
      [&] { disk_.failOnce("read", name, EIO); },
  };
  for (const auto& damage : damages) {
    getVersions({2, 1});
    damage();
    EXPECT_THAT(store_->verify(), ElementsAre(files2_[0]));
    EXPECT_EQ(Reason::Damaged, reasonOf([&] { store_->activate(2); }));
    open(kTwoVersions);
    EXPECT_EQ(Reason::Damaged, reasonOf([&] { store_->activate(2); })) << "it is remembered";
    EXPECT_THAT(store_->begin(2, files2_)->missing(), ElementsAre(files2_[0]));
    getVersions({2});
    expectActive(2);
    EXPECT_THAT(store_->verify(), IsEmpty());
  }
}

TEST_F(ModelFiles, thatAreFoundDamagedAreMissingEvenIfTheTableCannotBeWritten) {
  getVersions({1});
  const auto update = store_->begin(2, files1_);
  const auto file = disk_.environment().openRoot(kRoot)->openForAppending(nameOf(files1_[0]));
  file->truncate();
  file->append(std::string(kSize, '?').data(), kSize);
  disk_.failOnce("rename", ".versions", EIO);
  EXPECT_THAT(store_->verify(), ElementsAre(files1_[0]));
  EXPECT_THAT(update->missing(), ElementsAre(files1_[0]));
  disk_.failOnce("rename", ".versions", EIO);
  EXPECT_EQ(Reason::Io, reasonOf([&] { store_->deactivate(); }));
  EXPECT_EQ(Reason::Damaged, reasonOf([&] { store_->activate(1); })) << "it is remembered";
}

TEST_F(ModelFiles, thatAreDamagedAreReplacedByCopiesInTheRoot) {
  getVersions({1});
  reopenWith([&](Image& image) {
    image["copy"] = std::exchange(image[nameOf(files1_[0])], std::string(kSize, '?'));
  });
  EXPECT_THAT(store_->verify(), ElementsAre(files1_[0]));
  const auto update = store_->begin(1, files1_);
  EXPECT_THAT(update->missing(), IsEmpty());
  update->activate();
  expectActive(1);
}

TEST_F(ModelFiles, thatAreTooLongNeedNoMoreRoomToBeReplaced) {
  getVersions({1, 2});
  reopenWith([&](Image& image) { image[nameOf(files2_[0])] += std::string(1000, 'x'); },
             kTwoVersions);
  EXPECT_THAT(store_->begin(2, files2_)->missing(), ElementsAre(files2_[0]));
}

TEST_F(ModelFiles, thatAreProvenLostCostTheirVersion) {
  const std::string name = nameOf(files2_[0]);
  const Image found[] = {{}, {{name, std::string(kSize + 1, 'x')}}, {{name + '/', ""}}};
  for (const Image& instead : found) {
    getVersions({1, 2});
    reopenWith([&](Image& image) {
      image.erase(name);
      image.insert(instead.begin(), instead.end());
    });
    SoftErrors::count = 0;
    open();
    EXPECT_EQ(0, SoftErrors::count) << "it has been repaired";
    EXPECT_THAT(versions(), ElementsAre(1));
    EXPECT_EQ(std::nullopt, active());
  }
}

TEST_F(ModelFiles, thatCannotBeExaminedAreNotLost) {
  getVersions({1});
  store_.reset();
  disk_.failOnce("status", nameOf(files1_[0]), EIO);
  EXPECT_EQ(Reason::Io, reasonOf([&] { open(); }));
  open();
  expectActive(1);
}

TEST_F(ModelFiles, thatAreLostAreMissedOnActivation) {
  getVersions({1});
  const auto update = store_->begin(3, files1_);
  disk_.environment().openRoot(kRoot)->remove(nameOf(files1_[1]));
  EXPECT_EQ(Reason::Damaged, reasonOf([&] { store_->activate(1); }));
  EXPECT_EQ(Reason::Damaged, reasonOf([&] { update->activate(); }));
}

TEST_F(ModelFiles, ofRawCachesAreAdoptedOnABudgetOfExactlyTheirSize) {
  const auto& types = kCapability.types();
  const std::string index = R"({"versions":[{"version":1,"models":[]}]})";
  const Image raw = {{"k1", bytesOf(types[0], 1)},          {"extra/k1", "of the raw file"},
                     {"a%/b", bytesOf(types[1], 1)},        {"k3", bytesOf(types[2], 1)},
                     {"k4", bytesOf(types[3], 1)},          {"versioned_index", index},
                     {"metadata.json", "of the raw cache"}, {"extra/a%/b", "of the raw file"}};
  reopenWith([&](Image& image) { image.insert(raw.begin(), raw.end()); }, kVersionSize);
  store_->deactivate();
  EXPECT_EQ(index, disk_.now()["versioned_index"]) << "until there is a version";
  const auto update = store_->begin(7, files1_);
  EXPECT_THAT(update->missing(), IsEmpty());
  update->activate();
  EXPECT_EQ(kVersionSize, store_->sizeBytes());
  EXPECT_FALSE(has("k1") || has("a%/") || has("extra/"));
  Image now = disk_.now();
  EXPECT_EQ(bytesOf(types[0], 1), now[nameOf(files1_[0])]);
  EXPECT_EQ("of the raw cache", now["metadata.json"]);
  EXPECT_THAT(now["versioned_index"], HasSubstr(nameOf(files1_[3])));
}

TEST_F(ModelFiles, areAdoptedIfTheirBytesAreRightAndNobodyChangesThem) {
  const std::string right = bytesOf(files1_[0].type(), 1), part = ".part-" + nameOf(files1_[0]);
  const struct {
    std::string name, bytes;
    bool isChanged;  // After it was read.
    std::size_t missing;
    int softErrors;
  } cases[] = {{part, right, false, 3, 0},
               {part, bytesOf(files1_[0].type(), 2), false, 4, 1},
               {"k1", right, true, 4, 0}};
  for (const auto& [name, bytes, isChanged, missing, softErrors] : cases) {
    reopenWith([&, &file = name, &content = bytes](Image& image) { image[file] = content; });
    if (isChanged) {
      disk_.hook = [&, wasRead = false](std::string_view call, auto&) mutable {
        if (std::exchange(wasRead, call == "read")) {
          disk_.environment().openRoot(kRoot)->openForAppending("k1")->append("more", 4);
        }
      };
    }
    EXPECT_THAT(store_->begin(1, files1_)->missing(), SizeIs(missing)) << name;
    EXPECT_EQ(softErrors, SoftErrors::count.exchange(0)) << name;
    store_->trimExcept({});
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
