#include <optional>
#include <set>

#include "store/DiskModelStore.h"
#include "tests/store/Life.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;

std::unique_ptr<ModelStore> openStore(SimulatedDisk& disk) {
  return DiskModelStore::open(kRoot, kCapability, kTwoVersions, disk.environment());
}

class ModelStoreLife final : public Life {
 public:
  using Life::Life;

  /// Opens, updates with a retry, goes back and forth, trims, takes what lies there, and closes.
  void live() override {
    survives([&] {  // Nobody has synced it.
      const std::string raw = bytesOf(kCapability.types()[0], 3);
      disk_.environment().openRoot(kRoot)->create("raw")->append(raw.data(), raw.size());
    });
    std::unique_ptr<ModelStore> store;
    if (!survives([&] { store = openStore(disk_); })) {
      return;
    }
    const auto stay = [&](const auto& call) {
      const bool isDone = survives(call);
      agree(*store);
      return isDone;
    };
    const auto change = [&](std::optional<int> active, const auto& call) {
      may_.insert(active);
      if (stay(call)) {
        may_ = {active};
      }
    };
    for (const bool isRetry : {false, true}) {
      std::unique_ptr<Update> update;
      stay([&] { update = store->begin(3, filesOf(3)); });
      for (const ModelFile& file : update ? filesOf(3) : std::vector<ModelFile>()) {
        stay([&] { write(*update, file, isRetry); });
      }
      if (update && isRetry) {
        change(3, [&] { update->activate(); });
      }
    }
    change(2, [&] { store->activate(2); });
    committed_.clear();
    stay([&] { store->trimExcept({}); });
    stay([&] { EXPECT_TRUE(store->verify().empty() || hasStruck()); });
    change(std::nullopt, [&] { store->deactivate(); });
    change(4, [&] { update(*store, 4); });
    stay([&] { store->close(); });
    store.reset();
    cutPower();
  }

 private:
  /// Half of a file at first, the rest later.
  void write(Update& update, const ModelFile& file, bool isRetry) {
    const auto missing = update.missing();
    if (std::find(missing.begin(), missing.end(), file) == missing.end()) {
      return;
    }
    const auto out = update.write(file);
    std::string rest = bytesOf(file.type(), 3).substr(static_cast<std::size_t>(out->offset()));
    if (!isRetry && file.type() == kCapability.types()[1]) {
      out->write(rest.data(), rest.size() / 2);
      return;
    }
    put(*out, rest);
    committed_.insert(file.sha256());
  }

  /// Whatever happened: the next store of the root tells the same as this one.
  void agree(ModelStore& store) {
    std::shared_ptr<const Snapshot> told;
    if (!hasStruck() || fault_ == Fault::Death || testing::Test::HasFailure() ||
        !survives([&] { told = store.snapshot(); })) {
      return;
    }
    SimulatedDisk disk(disk_.now());
    const auto next = openStore(disk)->snapshot();
    EXPECT_EQ(told->active, next->active);
    EXPECT_EQ(told->versions, next->versions);
    EXPECT_EQ(1u, may_.count(told->active));
  }

  /// What cannot be read is got again.
  void forgetWhatIsUnreadable() override { committed_.clear(); }

  std::string expectation() const override {
    std::string text;
    for (const auto& version : may_) {
      text += std::to_string(version.value_or(0)) + ' ';
    }
    for (const std::string& digest : committed_) {
      text += digest;
    }
    return text;
  }

  void check(SimulatedDisk& disk) const override {
    const auto store = openStore(disk);
    const auto left = store->snapshot();
    EXPECT_EQ(1u, may_.count(left->active)) << left->active.value_or(0);
    Image now = disk.now();
    for (const auto& [type, path] : left->paths) {
      EXPECT_EQ(bytesOf(type, *left->active), now[path.substr(path.rfind('/') + 1)]);
    }
    EXPECT_TRUE(store->verify().empty());
    const auto update = store->begin(3, filesOf(3));
    for (const ModelFile& file : update->missing()) {
      EXPECT_EQ(0u, committed_.count(file.sha256())) << file.type();
    }
    update->close();
    samples::update(*store, 5);
    EXPECT_EQ(5, store->snapshot()->active);
    EXPECT_TRUE(store->verify().empty());
  }

  std::set<std::optional<int>> may_{2};  // Be active.
  std::set<std::string> committed_;      // Digests of files that no update is to list as missing.
};

/// A root in which version 2 is active and 1 is complete, and that has a file of version 4.
Image filledRoot() {
  SimulatedDisk disk;
  const auto store = openStore(disk);
  update(*store, 1);
  update(*store, 2);
  store->close();
  Image image = disk.now();
  image["a%/b"] = bytesOf(kCapability.types()[1], 4);
  image["a%/"] = image["extra/"] = "";
  image["extra/raw"] = "of the raw file";
  return image;
}

using FaultyModelStoreLife = FaultyLife;
INSTANTIATE_TEST_SUITE_P(, FaultyModelStoreLife,
                         testing::Values(Fault::None, Fault::Eio, Fault::Enospc, Fault::Edquot,
                                         Fault::Memory, Fault::Death));

TEST_P(FaultyModelStoreLife, keepsTheActiveVersionAndWhatWasCommitted) {
  liveWithEachFault<ModelStoreLife>(filledRoot());
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
