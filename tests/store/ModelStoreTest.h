#pragma once

#include <gmock/gmock.h>

#include <optional>
#include <vector>

#include "store/DiskModelStore.h"
#include "tests/store/Samples.h"
#include "tests/store/SimulatedDisk.h"

namespace zentrel::vistabase::ardelivery {

inline std::unique_ptr<ModelStore> openModels(SimulatedDisk& disk,
                                              std::int64_t budget = samples::kTwoVersions) {
  return DiskModelStore::open(kRoot, samples::kCapability, budget, disk.environment());
}

/// A root in which versions 1 and 2 are complete, and 2 is active.
inline Image rootWithTwoVersions() {
  SimulatedDisk disk;
  const auto store = openModels(disk);
  samples::update(*store, 1);
  samples::update(*store, 2);
  return disk.now();
}

/// A store on a simulated disk, with room for three versions.
class ModelStoreTest : public testing::Test {
 protected:
  using Reason = StoreError::Reason;

  void open(std::int64_t budget = 3 * samples::kVersionSize) {
    store_.reset();
    store_ = openModels(disk_, budget);
  }
  /// Reopens the store after a change to what is on the disk.
  template <class Change>
  void reopenWith(const Change& change, std::int64_t budget = 3 * samples::kVersionSize) {
    store_.reset();
    Image image = disk_.now();
    change(image);
    disk_ = SimulatedDisk(image);
    open(budget);
  }
  void getVersions(const std::vector<int>& versions) {
    for (const int version : versions) {
      samples::update(*store_, version);
    }
  }

  std::optional<int> active() { return store_->snapshot()->active; }
  std::vector<int> versions() { return store_->snapshot()->versions; }
  bool has(const std::string& name) { return disk_.now().count(name) != 0; }
  /// Expects that the version is active, and its files intact.
  void expectActive(int version) {
    EXPECT_EQ(version, active());
    Image now = disk_.now();
    for (const ModelFile& file : samples::filesOf(version)) {
      const std::string name = samples::nameOf(file);
      EXPECT_EQ(kRoot + ("/" + name), store_->snapshot()->paths.at(file.type()));
      EXPECT_EQ(samples::bytesOf(file.type(), version), now[name]);
    }
  }

  const samples::SoftErrors softErrors_;
  SimulatedDisk disk_;
  std::unique_ptr<ModelStore> store_;
  const std::vector<ModelFile> files1_ = samples::filesOf(1), files2_ = samples::filesOf(2);

  void SetUp() override { open(); }
};

}  // namespace zentrel::vistabase::ardelivery
