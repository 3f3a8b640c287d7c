// Stores on the real disk: planted files, and disks that are full or read-only.

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <functional>

#include "delivery/FileNames.h"
#include "modelcache/modelcache.h"
#include "tests/cpp/TemporaryDirectory.h"
#include "tests/store/Samples.h"

static std::atomic<int> syncs{0};

extern "C" int __real_fsync(int);

/// The linker redirects calls of fsync here.
extern "C" int __wrap_fsync(int file) {
  ++syncs;
  return __real_fsync(file);
}

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;
using testing::ElementsAre;
using testing::SizeIs;
using Reason = StoreError::Reason;

std::unique_ptr<ModelStore> openStore(const std::string& root) {
  return ModelStore::open(root, kCapability, 3 * kVersionSize);
}

class RealDisk : public testing::Test {
 protected:
  std::unique_ptr<ModelStore> openFilled() {
    auto store = openStore(root_.path());
    update(*store, 1);
    update(*store, 2);
    return store;
  }

  const SoftErrors softErrors_;
  const TemporaryDirectory root_;
};

TEST_F(RealDisk, runsTheCppExampleOfTheReadme) {
  const std::string root = root_ / "root";
  const std::vector<ModelFile> files = filesOf(7);
  const auto download = [](const ModelFile& file, std::int64_t offset, EntryWriter& out) {
    out.write(bytesOf(file.type(), 7).data() + offset, static_cast<std::size_t>(kSize - offset));
  };
#include "README.inc"
  EXPECT_EQ(7, ModelStore::open(root, Capability::faceTracking(), 50'000'000)->snapshot()->active);
}

TEST_F(RealDisk, isSyncedNoMoreThanNeeded) {
  std::unique_ptr<ModelStore> models;
  std::unique_ptr<FileStore> files;
  const std::pair<std::function<void()>, int> steps[] = {
      {[&] { models = openStore(root_ / "a/b//c/"); }, 3 + 2},  // Parents, and the marker.
      {[&] { update(*models, 1); }, 10},
      {[&] { update(*models, 2); }, 8},
      {[&] { models->activate(1); }, 2},
      {[&] { files = FileStore::open(root_ / "d", 100); }, 1 + 2},
      {[&] { put(*files->write("key"), "1"); }, 2},
      {[&] { files->setExtra("key", {1}); }, 1 + 2},  // The new directory.
      {[&] { files->remove("key"); }, 2},
      {[&] { files->write("known", 3, sha256("abc"))->write("a", 1); }, 0},
      {[&] { put(*files->write("known", 3, sha256("abc")), "abc"); }, 2},
      {[&] { files->clear(); }, 1}};
  for (const auto& [call, expected] : steps) {
    const int before = syncs;
    call();
    EXPECT_EQ(expected, syncs - before);
  }
}

TEST_F(RealDisk, failsCallsOnceTheRootIsDeleted) {
  const auto store = FileStore::open(root_ / "root", 100);
  boost::filesystem::remove_all(root_ / "root");
  EXPECT_EQ(Reason::Io, reasonOf([&] { store->get("key"); }));
}

TEST_F(RealDisk, followsNoLinkOutOfTheRoot) {
  const std::string part = std::string(kPartPrefix) + nameOf(filesOf(1)[0]);
  const std::string names[] = {
      kLockName,        kMarkerName,   kTableName,   kIndexName, kExtraName,
      ".new-.versions", ".new-.store", ".new-extra", part,       nameOf(filesOf(1)[0]),
      "metadata.json",  "extra/key",   ".part-key",  "key",      ".resume-" + sha256("abc")};
  const std::function<int(const TemporaryDirectory&, const char*)> plants[] = {
      [](auto& outside, auto* link) { return ::symlink((outside / "file").c_str(), link); },
      [](auto& outside, auto* link) { return ::link((outside / "file").c_str(), link); },
      [](auto& outside, auto* link) { return ::symlink(outside.path().c_str(), link); },
      [](auto&, auto* link) { return ::mkfifo(link, 0666); }};
  for (const auto& plant : plants) {
    for (const std::string& name : names) {
      SCOPED_TRACE(name);
      const TemporaryDirectory root, outside;
      outside.write("file", "o");  // Short enough to be a part.
      name == "extra/key" ? ::mkdir((root / "extra").c_str(), 0777) : 0;
      ASSERT_EQ(0, plant(outside, (root / name).c_str()));
      {
        const auto files = FileStore::open(root / "", 1000);
        put(*files->write("key"), "1");
        files->setExtra("key", {1});
        put(*files->write("known", 3, sha256("abc")), "abc");
        files->remove("key");
        files->clear();
      }
      ::unlink((root / kMarkerName).c_str());
      ::unlink((root / name).c_str());
      plant(outside, (root / name).c_str());
      {
        const auto models = openStore(root / "");
        update(*models, 1);
        update(*models, 2);
        models->trimExcept({});
        EXPECT_TRUE(models->verify().empty());
      }
      EXPECT_EQ(2, openStore(root / "")->snapshot()->active);
      EXPECT_EQ("o", outside.read("file"));
    }
  }
}

TEST_F(RealDisk, adoptsNoFileWithASecondLink) {
  root_.write("../linked-outside", bytesOf(kCapability.types()[0], 1));
  ASSERT_EQ(0, ::link((root_ / "../linked-outside").c_str(), (root_ / "key").c_str()));
  EXPECT_THAT(openStore(root_.path())->begin(1, filesOf(1))->missing(), SizeIs(4));
  ::unlink((root_ / "../linked-outside").c_str());
}

TEST_F(RealDisk, keepsTheOrderOfFilesDatedBeyondNanosecondsAndTheDatesOfLinkedOnes) {
  const auto date = [this](const char* name, std::int64_t seconds) {
    root_.write(name, "12345");
    const timespec time = {static_cast<time_t>(seconds), 0}, times[2] = {time, time};
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, (root_ / name).c_str(), times, 0));
  };
  date("root/in2400", sizeof(time_t) > 4 ? 13'569'465'600 : INT32_MAX);
  date("root/in1970", 100);
  date("outside", 100);
  ASSERT_EQ(0, ::link((root_ / "outside").c_str(), (root_ / "root/linked").c_str()));
  const auto store = FileStore::open(root_ / "root", 15);
  store->get("linked");
  put(*store->write("new"), "12345");
  EXPECT_THAT(store->keys(), testing::UnorderedElementsAre("in2400", "linked", "new"));
  struct stat status {};
  ASSERT_EQ(0, ::stat((root_ / "outside").c_str(), &status));
  EXPECT_EQ(100, status.st_mtime);
}

TEST_F(RealDisk, opensDespiteHugeOwnFiles) {
  openFilled();
  for (const char* name : {kTableName, kMarkerName, kIndexName, kLockName}) {
    ASSERT_EQ(0, ::truncate((root_ / name).c_str(), off_t{1} << 40)) << name;
    EXPECT_EQ(2, openStore(root_.path())->snapshot()->active);
  }
}

TEST_F(RealDisk, refusesToCommitAPartThatOthersChanged) {
  const auto store = openStore(root_.path());
  const auto update = store->begin(1, filesOf(1));
  const ModelFile file = filesOf(1)[0];
  const std::string part = std::string(kPartPrefix) + nameOf(file);
  const std::function<void()> changes[] = {
      [&] { ::truncate((root_ / part).c_str(), kSize - 1); },
      [&] { ::unlink((root_ / part).c_str()), root_.write(part, bytesOf(file.type(), 1)); },
      [&] { ::link((root_ / part).c_str(), (root_ / "another name").c_str()); }};
  for (const auto& change : changes) {
    const auto out = update->write(file);
    out->restart();
    out->write(bytesOf(file.type(), 1).data(), kSize);
    change();
    EXPECT_EQ(Reason::Io, reasonOf([&] { out->commit(); }));
    EXPECT_FALSE(root_.has(nameOf(file)));
  }
}

/// A root that is a small disk of its own.
class SmallDisk : public RealDisk {
 protected:
  void SetUp() override {
    if (::mount("tmpfs", root_.path().c_str(), "tmpfs", 0, "size=200k") != 0) {
      GTEST_SKIP() << "only root may mount a disk";
    }
  }
  void TearDown() override { ::umount2(root_.path().c_str(), MNT_DETACH); }
  void remount(unsigned long flags) {
    ASSERT_EQ(0, ::mount("", root_.path().c_str(), "", MS_REMOUNT | flags, "size=200k"));
  }
};

TEST_F(SmallDisk, canBeTrimmedWhenItIsFull) {
  auto store = openFilled();
  const auto update = store->begin(3, filesOf(3));
  root_.write(".filler", std::string(std::size_t{1} << 20, 'x'));  // More than there is room for.
  EXPECT_EQ(Reason::DiskFull, reasonOf([&] { download(*update, filesOf(3)[0], 3); }));
  EXPECT_EQ(Reason::DiskFull, reasonOf([&] { store->activate(1); }));
  store.reset();
  store = openStore(root_.path());
  EXPECT_EQ(2, store->snapshot()->active);
  store->trimExcept({});
  EXPECT_THAT(store->snapshot()->versions, ElementsAre(2));
}

TEST_F(SmallDisk, givesModelsWhileReadOnly) {
  openFilled();
  for (const char* lost : {"", kMarkerName, kLockName}) {
    ::unlink((root_ / lost).c_str());
    remount(MS_RDONLY);
    const auto store = openStore(root_.path());
    EXPECT_EQ(2, store->snapshot()->active);
    EXPECT_TRUE(store->verify().empty());
    EXPECT_EQ(Reason::ReadOnly, reasonOf([&] { store->begin(3, filesOf(3)); }));
    EXPECT_EQ(Reason::ReadOnly, reasonOf([&] { store->activate(1); }));
    EXPECT_EQ(Reason::ReadOnly, reasonOf([&] { store->trimExcept({}); }));
    EXPECT_EQ(Reason::InUse, reasonOf([&] { openStore(root_.path()); }));
    remount(0);
    store->activate(1);
    store->activate(2);
    EXPECT_TRUE(root_.has(kMarkerName)) << "before the first change";
  }
}

TEST_F(SmallDisk, givesEntriesWhileReadOnly) {
  root_.write("files/present", "1");
  remount(MS_RDONLY);
  const auto store = FileStore::open(root_ / "files", 1000);
  EXPECT_EQ(root_ / "files/present", store->get("present"));
  EXPECT_EQ(std::nullopt, store->get("absent"));
  EXPECT_EQ(Reason::ReadOnly, reasonOf([&] { store->write("key"); }));
  EXPECT_EQ(Reason::ReadOnly, reasonOf([&] { store->remove("present"); }));
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
