#include <optional>
#include <set>

#include "tests/store/Life.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;

class ModelStoreLife final : public Life {
 public:
  using Life::Life;

  /// Opens, updates with a retry, rolls back, trims, verifies, adopts raw files, and closes.
  void live() override {
    survives([&] {  // A raw file that was never synced.
      const std::string raw = bytesOf(kCapability.types()[0], 3);
      disk_.environment().openRoot(kRoot)->create("raw")->append(raw.data(), raw.size());
    });
    std::unique_ptr<ModelStore> store;
    if (!survives([&] { store = openModels(disk_); })) {
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
  /// Writes a file; of the second type, only half at first.
  void write(Update& update, const ModelFile& file, bool isRetry) {
    const auto out = update.write(file);  // Refused if the file is not missing.
    if (!isRetry && file.type() == kCapability.types()[1]) {
      out->write(bytesOf(file.type(), 3).data(), kSize / 2);
    } else {
      put(*out, bytesOf(file.type(), 3));
      committed_.insert(file.sha256());
    }
  }

  /// Whatever has failed, the store and the next one on its root agree.
  void agree(ModelStore& store) {
    std::shared_ptr<const Snapshot> told;
    if (!hasStruck() || fault_ == kDeath || testing::Test::HasFailure() ||
        !survives([&] { told = store.snapshot(); })) {
      return;
    }
    SimulatedDisk disk(disk_.now());
    const auto next = openModels(disk)->snapshot();
    EXPECT_EQ(told->active, next->active);
    EXPECT_EQ(told->versions, next->versions);
    EXPECT_EQ(1u, may_.count(told->active));
  }

  void forgetWhatIsUnreadable() override { committed_.clear(); }

  std::string expectation() const override {
    return testing::PrintToString(std::pair(may_, committed_));
  }

  void check(SimulatedDisk& disk) const override {
    const auto store = openModels(disk);
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

  std::set<std::optional<int>> may_{2};  // Versions that may be active.
  std::set<std::string> committed_;      // Digests of files that no update may list as missing.
};

TEST(FaultyLife, keepsTheActiveVersionAndCommittedFiles) {
  Image image = rootWithTwoVersions();
  image["a%/b"] = bytesOf(kCapability.types()[1], 4);
  image["extra/raw"] = "of the raw file";
  liveWithEachFault<ModelStoreLife>(image);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
