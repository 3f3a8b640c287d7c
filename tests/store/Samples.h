#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/softerror/softerror.h"
#include "store/DiskModelStore.h"
#include "tests/store/SimulatedDisk.h"

/// Versions to fill stores with. Each has two files of its own and shares the other two.
namespace zentrel::vistabase::ardelivery::samples {

inline const Capability kCapability = Capability::faceTracking();
constexpr std::int64_t kSize = 100;
constexpr std::int64_t kVersionSize = 4 * kSize;
constexpr std::int64_t kTwoVersions = 6 * kSize;  ///< Of two versions together.

inline std::string bytesOf(const std::string& type, int version) {
  const auto& types = kCapability.types();
  const bool isShared = std::find(types.begin(), types.end(), type) - types.begin() >= 2;
  std::string bytes = type + (isShared ? "" : " of version " + std::to_string(version));
  bytes.resize(static_cast<std::size_t>(kSize), '.');
  return bytes;
}

inline ModelFile fileOf(const std::string& type, const std::string& bytes) {
  return {type, static_cast<std::int64_t>(bytes.size()), sha256(bytes)};
}

inline std::vector<ModelFile> filesOf(int version) {
  std::vector<ModelFile> files;
  for (const std::string& type : kCapability.types()) {
    files.push_back(fileOf(type, bytesOf(type, version)));
  }
  return files;
}

/// The name of a model file in a root.
inline std::string nameOf(const ModelFile& file) {
  return file.sha256() + '-' + file.type();
}

/// Writes the rest of `bytes`, from the writer's offset on, and commits.
inline void put(EntryWriter& out, const std::string& bytes) {
  const auto offset = static_cast<std::size_t>(out.offset());
  out.write(bytes.data() + offset, bytes.size() - offset);
  out.commit();
}

inline void download(Update& update, const ModelFile& file, int version) {
  put(*update.write(file), bytesOf(file.type(), version));
}

inline void update(ModelStore& store, int version) {
  const auto update = store.begin(version, filesOf(version));
  for (const ModelFile& file : update->missing()) {
    download(*update, file, version);
  }
  update->activate();
}

/// Returns the StoreError that a call throws; fails, and returns one of Io, if it throws none.
template <class Call>
StoreError errorOf(const Call& call) {
  try {
    call();
    ADD_FAILURE() << "no error";
  } catch (const StoreError& error) {
    return error;
  }
  return {StoreError::Reason::Io, ""};
}

template <class Call>
StoreError::Reason reasonOf(const Call& call) {
  return errorOf(call).reason();
}

/// Counts soft errors instead of printing them.
class SoftErrors {
 public:
  SoftErrors() {
    count = 0;
    softerror::setSink({[](const softerror::Report&, void*) { ++count; }});
  }
  ~SoftErrors() { softerror::setSink({}); }

  static inline std::atomic<int> count = 0;
};

inline std::unique_ptr<ModelStore> openModels(SimulatedDisk& disk,
                                              std::int64_t budget = kTwoVersions) {
  return DiskModelStore::open(kRoot, kCapability, budget, disk.environment());
}

/// A root in which versions 1 and 2 are complete, and 2 is active.
inline Image rootWithTwoVersions() {
  SimulatedDisk disk;
  const auto store = openModels(disk);
  update(*store, 1);
  update(*store, 2);
  return disk.now();
}

/// A store on a simulated disk, with room for three versions.
class ModelStoreTest : public testing::Test {
 protected:
  using Reason = StoreError::Reason;

  void open(std::int64_t budget = 3 * kVersionSize) {
    store_.reset();
    store_ = openModels(disk_, budget);
  }
  /// Reopens the store after a change to what is on the disk.
  template <class Change>
  void reopenWith(const Change& change, std::int64_t budget = 3 * kVersionSize) {
    store_.reset();
    Image image = disk_.now();
    change(image);
    disk_ = SimulatedDisk(image);
    open(budget);
  }
  void getVersions(const std::vector<int>& versions) {
    for (const int version : versions) {
      update(*store_, version);
    }
  }

  std::optional<int> active() { return store_->snapshot()->active; }
  std::vector<int> versions() { return store_->snapshot()->versions; }
  bool has(const std::string& name) { return disk_.now().count(name) != 0; }
  /// Expects that the version is active, and its files intact.
  void expectActive(int version) {
    EXPECT_EQ(version, active());
    Image now = disk_.now();
    for (const ModelFile& file : filesOf(version)) {
      const std::string name = nameOf(file);
      EXPECT_EQ(kRoot + ("/" + name), store_->snapshot()->paths.at(file.type()));
      EXPECT_EQ(bytesOf(file.type(), version), now[name]);
    }
  }

  const SoftErrors softErrors_;
  SimulatedDisk disk_;
  std::unique_ptr<ModelStore> store_;
  const std::vector<ModelFile> files1_ = filesOf(1), files2_ = filesOf(2);

  void SetUp() override { open(); }
};

}  // namespace zentrel::vistabase::ardelivery::samples
