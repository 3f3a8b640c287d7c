#include <gmock/gmock.h>

#include <functional>

#include "store/DiskFileStore.h"
#include "store/DiskModelStore.h"
#include "store/VersionTableFile.h"
#include "tests/store/Samples.h"
#include "tests/store/SimulatedDisk.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Reason = StoreError::Reason;

constexpr const char* kRoot = "/root";

class ModelStoreTest : public testing::Test {
 protected:
  void open(std::int64_t budget = 3 * kVersionSize) {
    store_.reset();
    store_ = DiskModelStore::open(kRoot, kCapability, budget, disk_.environment());
  }
  /// On a disk that has more, or less, than the store left on it.
  void reopenWith(const std::function<void(Image&)>& change,
                  std::int64_t budget = 3 * kVersionSize) {
    store_.reset();
    Image image = disk_.now();
    change(image);
    disk_ = SimulatedDisk(image);
    open(budget);
  }
  std::optional<int> active() { return store_->snapshot()->active; }
  std::vector<int> versions() { return store_->snapshot()->versions; }
  bool has(const std::string& name) { return disk_.now().count(name) != 0; }
  /// The active version's files have its bytes.
  void expectWhole(int version) {
    EXPECT_EQ(version, active());
    Image now = disk_.now();
    for (const ModelFile& file : filesOf(version)) {
      EXPECT_EQ(kRoot + ("/" + nameOf(file)), store_->snapshot()->paths.at(file.type()));
      EXPECT_EQ(bytesOf(file.type(), version), now[nameOf(file)]);
    }
  }
  void failOnce(const std::string& call, const std::string& name, int error) {
    disk_.hook = [this, call, name, error](std::string_view each, const std::string& on) {
      if (each == call && on == name) {
        const StoreError failure = StoreError::ofSystem("simulate", name, error, true);
        disk_.hook = [](auto, auto&) {};  // Nothing that was captured is left.
        throw failure;
      }
    };
  }

  const SoftErrors softErrors_;
  SimulatedDisk disk_;
  std::unique_ptr<ModelStore> store_ =
      DiskModelStore::open(kRoot, kCapability, 3 * kVersionSize, disk_.environment());
  const std::vector<ModelFile> files1_ = filesOf(1), files2_ = filesOf(2);
};

TEST_F(ModelStoreTest, goesBackToAnOlderVersion) {
  update(*store_, 1);
  update(*store_, 2);
  store_->activate(1);
  expectWhole(1);
  open();
  expectWhole(1);
  EXPECT_THAT(versions(), ElementsAre(1, 2));
  EXPECT_THROW(store_->activate(3), std::invalid_argument);
}

TEST_F(ModelStoreTest, listsOnlyFilesThatNoVersionHas) {
  update(*store_, 1);
  EXPECT_THAT(store_->begin(2, files2_)->missing(), ElementsAre(files2_[0], files2_[1]));
}

TEST_F(ModelStoreTest, completesAVersionWhoseFilesAreAllThere) {
  update(*store_, 1);
  EXPECT_THAT(store_->begin(2, files1_)->missing(), IsEmpty());
  EXPECT_THAT(versions(), ElementsAre(1, 2));
  EXPECT_EQ(1, active());
}

TEST_F(ModelStoreTest, replacesAVersionThatIsPublishedAgainOnActivation) {
  update(*store_, 1);
  std::vector<ModelFile> files;
  for (const std::string& type : kCapability.types()) {
    files.push_back(fileOf(type, bytesOf(kCapability.types()[0], 2)));
  }
  const auto update = store_->begin(1, files);
  EXPECT_THAT(update->missing(), ElementsAre(files[0]));
  download(*update, files[0], 2);
  expectWhole(1);
  update->activate();
  open();
  const auto paths = store_->snapshot()->paths;
  EXPECT_EQ(4u, paths.size());
  EXPECT_EQ(paths.begin()->second, paths.rbegin()->second);
}

TEST_F(ModelStoreTest, resumesAFileInALaterProcess) {
  store_->begin(1, files1_)->write(files1_[0])->write("12345", 5);
  open();
  const auto update = store_->begin(1, files1_);
  const auto out = update->write(files1_[0]);
  EXPECT_EQ(5, out->offset());
  out->restart();
  EXPECT_EQ(0, out->offset());
  put(*out, bytesOf(files1_[0].type(), 1));
  EXPECT_THAT(update->missing(), SizeIs(3));
}

TEST_F(ModelStoreTest, keepsWhatCameEarlyAndDropsWhatIsWrong) {
  const std::string good = bytesOf(files1_[0].type(), 1);
  const struct {
    std::string bytes;
    Reason reason;
    std::int64_t offset;  // Of the next writer.
  } cases[] = {{"", Reason::TooShort, 0},
               {good.substr(1), Reason::TooShort, kSize - 1},
               {good + "!", Reason::WrongContent, 0},
               {bytesOf(files1_[0].type(), 7), Reason::WrongContent, 0}};
  const auto update = store_->begin(1, files1_);
  for (const auto& [bytes, reason, offset] : cases) {
    const auto out = update->write(files1_[0]);
    out->restart();
    EXPECT_EQ(reason, reasonOf([&, &sent = bytes] { put(*out, sent); })) << bytes;
    EXPECT_EQ(Reason::Io, reasonOf([&] { out->write("!", 1); })) << "the writer is closed";
    EXPECT_EQ(offset, update->write(files1_[0])->offset()) << bytes;
  }
}

TEST_F(ModelStoreTest, takesAWholePartIfItsBytesAreRight) {
  for (const bool isRight : {true, false}) {
    reopenWith([&](Image& image) {
      image[".part-" + nameOf(files1_[0])] = bytesOf(files1_[0].type(), isRight ? 1 : 2);
    });
    EXPECT_THAT(store_->begin(1, files1_)->missing(), SizeIs(isRight ? 3 : 4));
    EXPECT_EQ(isRight ? 0 : 1, SoftErrors::count);
    store_->trimExcept({});
  }
}

TEST_F(ModelStoreTest, refusesBadArguments) {
  const std::string digest = files1_[0].sha256();
  const std::vector<std::function<void()>> calls = {
      [&] { ModelFile("t", -1, digest); },
      [&] { ModelFile("t", 1, digest + "0"); },
      [&] { ModelFile("t", 1, "g" + digest.substr(1)); },
      [&] { store_->begin(1, {}); },
      [&] {
        store_->begin(1, {files1_[0], files1_[1], files1_[2]});
      },
      [&] {
        store_->begin(1, {files1_[0], files1_[1], files1_[2], files1_[2]});
      },
      [&] {
        store_->begin(1, {files1_[0], files1_[1], files1_[2], {"other", 1, digest}});
      },
      [&] {
        store_->begin(1, {files1_[0], files1_[1], files1_[2], {"pdm_multires.bin", 1, digest}});
      },
      [&] { store_->files(1); },
      [&] { store_->setMaxSizeBytes(-1); },
      [&] { ModelStore::open("", kCapability, 1); },
      [&] { ModelStore::open(std::string("a\0b", 3), kCapability, 1); },
      [&] { ModelStore::open("/nowhere", kCapability, -1); },
      [&] { Capability::of("", {"t"}); },
      [&] { Capability::of("C", {}); },
      [&] {
        Capability::of("C", {"t", "t"});
      },
      [&] { Capability::of("C", {".t"}); },
      [&] { Capability::of("C", {"a/b"}); },
      [&] { Capability::of("C", {std::string(181, 't')}); },
      [&] { Capability::of("C", std::vector<std::string>(65, "t")); },
      [&] { Capability::of("FACE_TRACKING", {"t"}); },
  };
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_THROW(calls[i](), std::invalid_argument) << i;
  }
  EXPECT_EQ(files1_[0], ModelFile(files1_[0].type(), kSize, [digest] {
              std::string upper = digest;
              std::transform(upper.begin(), upper.end(), upper.begin(), ::toupper);
              return upper;
            }()));
}

TEST_F(ModelStoreTest, hasOneUpdateAtATime) {
  auto update = store_->begin(1, files1_);
  EXPECT_THROW(store_->begin(2, files2_), UsageError);
  EXPECT_THAT(update->missing(), SizeIs(4)) << "it goes on";
  const auto out = update->write(files1_[0]);
  EXPECT_THROW(update->write(files1_[0]), UsageError);
  update->close();
  EXPECT_THROW(out->write("!", 1), UsageError);
  store_->begin(2, files2_);
}

TEST_F(ModelStoreTest, canBeginAgainAfterAFailure) {
  failOnce("syncDirectory", "", EIO);
  EXPECT_EQ(Reason::Io, reasonOf([&] { store_->begin(1, files1_); }));
  update(*store_, 1);
  expectWhole(1);
}

TEST_F(ModelStoreTest, outlivesNothing) {
  const auto update = store_->begin(1, files1_);
  const auto out = update->write(files1_[0]);
  store_->close();
  store_->close();
  const std::vector<std::function<void()>> calls = {[&] { store_->snapshot(); },
                                                    [&] { store_->begin(1, files1_); },
                                                    [&] { store_->activate(1); },
                                                    [&] { store_->deactivate(); },
                                                    [&] { store_->trimExcept({}); },
                                                    [&] { store_->verify(); },
                                                    [&] { store_->files(1); },
                                                    [&] { store_->sizeBytes(); },
                                                    [&] { update->missing(); },
                                                    [&] { update->write(files1_[0]); },
                                                    [&] { update->activate(); },
                                                    [&] { update->totalBytes(); },
                                                    [&] { update->remainingBytes(); },
                                                    [&] { store_->setMaxSizeBytes(1); },
                                                    [&] { out->write("!", 1); },
                                                    [&] { out->commit(); },
                                                    [&] { out->restart(); }};
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_THROW(calls[i](), UsageError) << i;
  }
  store_.reset();
  update->close();
  out->close();
}

TEST_F(ModelStoreTest, stopsACancelledUpdateAndKeepsItsBytes) {
  const auto update = store_->begin(1, files1_);
  const auto out = update->write(files1_[0]);
  const std::string bytes = bytesOf(files1_[0].type(), 1);
  out->write(bytes.data(), bytes.size());
  update->cancel();
  EXPECT_THROW(out->write("!", 1), UsageError);
  EXPECT_THROW(out->commit(), UsageError);
  EXPECT_THROW(update->activate(), UsageError);
  update->close();
  EXPECT_THAT(store_->begin(1, files1_)->missing(), SizeIs(3));
}

TEST_F(ModelStoreTest, makesRoomOfTheVersionNotActiveForLongestAndThenOfStrays) {
  for (const int version : {1, 2, 3}) {
    update(*store_, version);
  }
  store_->activate(1);
  reopenWith([](Image& image) { image["stray"] = "0123456789"; }, kTwoVersions + 2 * kSize + 10);
  store_->begin(4, filesOf(4));
  EXPECT_THAT(versions(), ElementsAre(1, 3));
  EXPECT_TRUE(has("stray"));
  store_->setMaxSizeBytes(kTwoVersions + 9);
  store_->begin(4, filesOf(4));
  EXPECT_THAT(versions(), ElementsAre(1));
  EXPECT_FALSE(has("stray"));
  expectWhole(1);
}

TEST_F(ModelStoreTest, tellsTheNumbersIfTheBudgetIsTooSmall) {
  update(*store_, 1);
  store_->setMaxSizeBytes(kTwoVersions - 1);
  try {
    store_->begin(2, files2_);
    FAIL();
  } catch (const StoreError& error) {
    EXPECT_EQ(Reason::NoRoom, error.reason());
    EXPECT_EQ(kTwoVersions, error.room()->needed);
    EXPECT_EQ(kTwoVersions - 1, error.room()->budget);
    EXPECT_THAT(error.what(), HasSubstr("600 together with the active version 1"));
  }
}

TEST_F(ModelStoreTest, countsSizesThatNoNumberHolds) {
  const auto& types = kCapability.types();
  const std::vector<ModelFile> huge = {{types[0], INT64_MAX, sha256("a")},
                                       {types[1], INT64_MAX, sha256("b")},
                                       files1_[2],
                                       files1_[3]};
  EXPECT_EQ(Reason::NoRoom, reasonOf([&] { store_->begin(1, huge); }));
}

TEST_F(ModelStoreTest, deletesNothingIfThatWouldNotBeEnough) {
  update(*store_, 1);
  update(*store_, 2);
  open(100 * kVersionSize);
  disk_.free = 1;
  EXPECT_EQ(Reason::DiskFull, reasonOf([&] {
              store_->begin(3, {fileOf(kCapability.types()[0], std::string(1000, 'x')), files2_[1],
                                files2_[2], files2_[3]});
            }));
  EXPECT_THAT(versions(), ElementsAre(1, 2));
}

TEST_F(ModelStoreTest, makesRoomOnTheDiskToo) {
  update(*store_, 1);
  update(*store_, 2);
  disk_.free = 1;
  store_->begin(3, filesOf(3));
  EXPECT_THAT(versions(), ElementsAre(2));
}

TEST_F(ModelStoreTest, givesUpTheActiveVersionIfThatIsAllowedAndNeeded) {
  update(*store_, 1);
  store_->begin(2, files2_, Room::GiveUpActive);
  EXPECT_EQ(1, active()) << "there was room";
  store_->setMaxSizeBytes(kVersionSize);
  const auto update = store_->begin(2, files2_, Room::GiveUpActive);
  EXPECT_EQ(std::nullopt, active());
  EXPECT_THAT(store_->snapshot()->paths, IsEmpty());
  EXPECT_THAT(update->missing(), SizeIs(2)) << "what both share stays";
  download(*update, files2_[0], 2);
  download(*update, files2_[1], 2);
  update->activate();
  expectWhole(2);
}

TEST_F(ModelStoreTest, trimsAllButTheActiveVersionAndThoseNamed) {
  for (const int version : {1, 2, 3}) {
    update(*store_, version);
  }
  store_->trimExcept({1, 9});
  EXPECT_THAT(versions(), ElementsAre(1, 3));
  store_->deactivate();
  store_->trimExcept({});
  EXPECT_THAT(versions(), ElementsAre(1, 3)) << "nothing would stay";
  EXPECT_TRUE(store_->verify().empty());
}

TEST_F(ModelStoreTest, trimsWhatUnfinishedUpdatesLeftButNotWhatIsRunningNorOthers) {
  update(*store_, 1);
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

TEST_F(ModelStoreTest, findsDamageAndFetchesItAgain) {
  const std::string name = nameOf(files2_[0]);
  const std::vector<std::function<void()>> damages = {
      [&] { reopenWith([&](Image& image) { image[name][5] ^= 1; }); },
      [&] { failOnce("read", name, EIO); },
  };
  for (const auto& damage : damages) {
    update(*store_, 2);
    update(*store_, 1);
    damage();
    EXPECT_THAT(store_->verify(), ElementsAre(files2_[0]));
    EXPECT_EQ(Reason::Damaged, reasonOf([&] { store_->activate(2); }));
    open(kTwoVersions);
    EXPECT_EQ(Reason::Damaged, reasonOf([&] { store_->activate(2); })) << "it is remembered";
    EXPECT_THAT(store_->begin(2, files2_)->missing(), ElementsAre(files2_[0]));
    update(*store_, 2);
    expectWhole(2);
    EXPECT_THAT(store_->verify(), IsEmpty());
  }
}

TEST_F(ModelStoreTest, listsWhatIsDamagedDuringAnUpdate) {
  update(*store_, 1);
  const auto update = store_->begin(2, files2_);
  failOnce("read", nameOf(files2_[3]), EIO);
  store_->verify();
  EXPECT_THAT(update->missing(), SizeIs(3));
}

TEST_F(ModelStoreTest, refusesToActivateWhatHasLostAFile) {
  update(*store_, 1);
  const auto root = disk_.environment().openRoot(kRoot);
  root->remove(nameOf(files1_[1]));
  EXPECT_EQ(Reason::Damaged, reasonOf([&] { store_->activate(1); }));
}

TEST_F(ModelStoreTest, dropsOnlyVersionsThatAreProvenLost) {
  const std::string name = nameOf(files2_[0]);
  const std::function<void(Image&)> losses[] = {
      [&](Image& image) { image.erase(name); },
      [&](Image& image) { image[name] += "longer"; },
      [&](Image& image) { image.erase(name), image[name + "/"] = ""; },
  };
  for (const auto& lose : losses) {
    update(*store_, 1);
    update(*store_, 2);
    reopenWith(lose);
    EXPECT_THAT(versions(), ElementsAre(1));
    EXPECT_EQ(std::nullopt, active());
  }
  store_.reset();
  failOnce("status", nameOf(files1_[0]), EIO);
  EXPECT_EQ(Reason::Io, reasonOf([&] { open(); }));
  open();
  EXPECT_THAT(versions(), ElementsAre(1));
}

TEST_F(ModelStoreTest, takesWhatRawCachesPutThereOnABudgetOfExactlyThat) {
  const auto& types = kCapability.types();
  reopenWith(
      [&](Image& image) {
        image["k1"] = bytesOf(types[0], 1);
        image["extra/"] = image["a%/"] = "";
        image["extra/k1"] = "of the raw file";
        image["a%/b"] = bytesOf(types[1], 1);
        image["k3"] = bytesOf(types[2], 1);
        image["k4"] = bytesOf(types[3], 1);
        image["versioned_index"] = R"({"versions":[{"version":1,"models":[]}]})";
        image["metadata.json"] = "damaged";
      },
      kVersionSize);
  const auto update = store_->begin(7, files1_);
  EXPECT_THAT(update->missing(), IsEmpty());
  update->activate();
  EXPECT_EQ(kVersionSize, store_->sizeBytes());
  EXPECT_FALSE(has("k1") || has("a%/b") || has("extra/k1"));
  Image now = disk_.now();
  EXPECT_EQ(bytesOf(types[0], 1), now[nameOf(files1_[0])]);
  EXPECT_EQ("damaged", now["metadata.json"]) << "which is the raw cache's";
  EXPECT_THAT(now["versioned_index"], HasSubstr(nameOf(files1_[3])));
}

TEST_F(ModelStoreTest, leavesARawIndexUntilItHasAVersion) {
  const std::string index = R"({"versions":[{"version":1,"models":[]}]})";
  reopenWith([&](Image& image) { image["versioned_index"] = index; });
  store_->begin(1, files1_);
  store_->deactivate();
  EXPECT_EQ(index, disk_.now()["versioned_index"]);
}

TEST_F(ModelStoreTest, doesNotTakeAFileThatChangesMeanwhile) {
  reopenWith([&](Image& image) { image["k1"] = bytesOf(files1_[0].type(), 1); });
  disk_.hook = [this](std::string_view call, const std::string& name) {
    if (call == "read" && name == "k1" && disk_.now()["k1"] != "") {
      disk_.environment().openRoot(kRoot)->openForAppending("k1")->truncate();
    }
  };
  EXPECT_THAT(store_->begin(1, files1_)->missing(), SizeIs(4));
}

TEST_F(ModelStoreTest, refusesARootOfAnotherKind) {
  update(*store_, 1);
  store_.reset();
  for (const std::vector<std::string>& lost :
       std::vector<std::vector<std::string>>{{}, {".store"}, {".store", ".versions"}}) {
    reopenWith([&](Image& image) {
      for (const std::string& name : lost) {
        image.erase(name);
      }
    });
    store_.reset();
    const Image before = disk_.now();
    EXPECT_THROW(DiskFileStore::open(kRoot, 1, disk_.environment()), std::invalid_argument);
    EXPECT_THROW(DiskModelStore::open(kRoot, Capability::segmentation(), 1, disk_.environment()),
                 std::invalid_argument);
    EXPECT_EQ(before.size(), disk_.now().size());
  }
  SimulatedDisk files;
  DiskFileStore::open(kRoot, 1, files.environment());
  EXPECT_THROW(DiskModelStore::open(kRoot, kCapability, 1, files.environment()),
               std::invalid_argument);
}

TEST_F(ModelStoreTest, keepsAnyCapability) {
  const Capability own = Capability::of("own.thing", {"b.bin", "a.bin"});
  SimulatedDisk disk;
  auto store = DiskModelStore::open(kRoot, own, 100, disk.environment());
  {
    const auto update = store->begin(-1, {fileOf("a.bin", "aa"), fileOf("b.bin", "b")});
    put(*update->write(fileOf("a.bin", "aa")), "aa");
    put(*update->write(fileOf("b.bin", "b")), "b");
    update->activate();
  }
  store.reset();
  store = DiskModelStore::open(kRoot, own, 100, disk.environment());
  EXPECT_EQ(-1, store->snapshot()->active);
  EXPECT_EQ("b.bin", store->files(-1)[0].file.type());
  store.reset();
  EXPECT_THROW(
      DiskModelStore::open(kRoot, Capability::of("own.thing", {"a.bin"}), 100, disk.environment()),
      std::invalid_argument);
}

TEST_F(ModelStoreTest, tellsSizesForAProgressBar) {
  update(*store_, 1);
  const auto update = store_->begin(2, files2_);
  EXPECT_EQ(kVersionSize, update->totalBytes());
  EXPECT_EQ(2 * kSize, update->remainingBytes());
  const auto out = update->write(files2_[0]);
  out->write("12345", 5);
  EXPECT_EQ(2 * kSize - 5, update->remainingBytes());
  EXPECT_EQ(kVersionSize, store_->sizeBytes());
  EXPECT_EQ(files1_[2], store_->files(1)[2].file);
}

TEST_F(ModelStoreTest, leavesNoVersionActiveIfAsked) {
  update(*store_, 1);
  store_->deactivate();
  open();
  EXPECT_EQ(std::nullopt, active());
  store_->activate(1);
  expectWhole(1);
}

TEST_F(ModelStoreTest, refusesASoftErrorSinkThatCallsItBack) {
  reopenWith([&](Image& image) { image[".part-" + nameOf(files1_[0])] = std::string(kSize, '?'); });
  int refused = 0;
  std::function<void()> callBack = [&] {
    store_->snapshot();
    for (const std::function<void()>& call : std::vector<std::function<void()>>{
             [&] { store_->close(); }, [&] { store_->activate(1); }, [&] { store_->verify(); }}) {
      try {
        call();
      } catch (const UsageError&) {
        ++refused;
      }
    }
  };
  softerror::setSink(
      {[](const softerror::Report&, void* call) { (*static_cast<std::function<void()>*>(call))(); },
       &callBack});
  store_->begin(1, files1_);
  EXPECT_EQ(3, refused);
}

TEST_F(ModelStoreTest, writesNoTableThatItCouldNotRead) {
  std::vector<std::string> types;
  for (int i = 0; i < 64; ++i) {
    types.push_back(std::string(170, 't') + std::to_string(i));
  }
  VersionTable table{Capability::of("large", types)};
  for (int number = 0; number < 600; ++number) {
    Version version{number, {}};
    for (const std::string& type : types) {
      version.files.push_back({{type, 1, sha256("x")}, sha256("x") + "-" + type});
    }
    table.versions.push_back(std::make_shared<const Version>(std::move(version)));
  }
  EXPECT_EQ(Reason::NoRoom, reasonOf([&] { VersionTableFile::print({table, {}}); }));
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
