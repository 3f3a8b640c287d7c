// The lives of stores on a simulated disk: what a power cut may leave at each of their steps, and
// what becomes of them when a step fails.

#include <gtest/gtest.h>

#include <iostream>
#include <new>
#include <optional>
#include <set>
#include <tuple>
#include <unordered_set>

#include "store/DiskFileStore.h"
#include "store/DiskModelStore.h"
#include "store/FileKey.h"
#include "tests/store/Samples.h"
#include "tests/store/SimulatedDisk.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;

constexpr const char* kRoot = "/root";
constexpr std::int64_t kBudget = kTwoVersions;

std::string textOf(const Image& image) {
  std::string text;
  for (const auto& [path, bytes] : image) {
    text += path + '\n' + bytes + '\n';
  }
  return text;
}

bool isChange(std::string_view call) {
  return call != "read" && call != "status" && call != "list" && call.substr(0, 4) != "open";
}

/// Checks each state that a power cut may leave once.
class PowerCuts {
 public:
  /// Of so many changes, every subset.
  explicit PowerCuts(std::size_t mostChanges) : mostChanges_(mostChanges) {}

  template <class Check>
  void at(const SimulatedDisk& disk, const std::string& expectation, const Check& check) {
    leftOut_ += disk.forEachPowerCut(mostChanges_, [&](const Image& image) {
      if (!testing::Test::HasFailure() && seen_.insert(textOf(image) + expectation).second) {
        check(image);
        if (testing::Test::HasFailure()) {
          std::cout << textOf(image);
        }
      }
    });
  }
  ~PowerCuts() {
    std::cout << seen_.size() << " states, " << leftOut_ << " combinations left out\n";
  }

 private:
  const std::size_t mostChanges_;
  std::unordered_set<std::string> seen_;
  std::uint64_t leftOut_ = 0;
};

enum class Fault { None, Eio, Enospc, Edquot, Memory, Death };

/// Makes the n-th call on a disk fail, and with Death all later ones too.
class Strike {
 public:
  Strike(Fault fault, int call) : fault_(fault), left_(call) {}

  void pass(const std::string& name) {
    if (fault_ == Fault::None || --left_ > 0 || (left_ < 0 && fault_ != Fault::Death)) {
      return;
    }
    if (fault_ == Fault::Memory || fault_ == Fault::Death) {
      throw std::bad_alloc();
    }
    const int error = fault_ == Fault::Eio ? EIO : fault_ == Fault::Enospc ? ENOSPC : EDQUOT;
    throw StoreError::ofSystem("simulate", name, error, true);
  }
  bool hasStruck() const { return left_ <= 0; }
  bool isDeath() const { return fault_ == Fault::Death; }
  bool isOver() const { return fault_ == Fault::None || hasStruck(); }

 private:
  const Fault fault_;
  int left_;
};

/// Runs a step of a life. False if it was struck.
template <class Step>
bool survives(const Step& step) {
  try {
    step();
    return true;
  } catch (const StoreError&) {
  } catch (const UsageError&) {
  } catch (const std::bad_alloc&) {
  } catch (const std::invalid_argument&) {
  }
  return false;
}

class ModelLife {
 public:
  ModelLife(const Image& image, Strike strike, PowerCuts& cuts)
      : disk_(image), strike_(strike), cuts_(cuts) {
    disk_.hook = [this](std::string_view call, const std::string& name) {
      if (isChange(call)) {
        cutPower();
      }
      try {
        strike_.pass(name);
      } catch (const StoreError&) {
        if (!isChange(call)) {
          committed_.clear();  // What cannot be read is got again.
        }
        throw;
      }
    };
  }

  /// Opens, updates with a retry, goes back and forth, trims, takes what lies there, and closes.
  void live() {
    std::unique_ptr<ModelStore> store;
    if (!survives([&] {
          store = DiskModelStore::open(kRoot, kCapability, kBudget, disk_.environment());
        })) {
      return;
    }
    const auto step = [&](std::optional<int> version, const auto& call) {
      may_.insert(version);
      if (survives(call)) {
        may_ = {version};
      }
      agree(*store);
    };
    const auto stay = [&](const auto& call) {
      survives(call);
      agree(*store);
    };
    for (int attempt = 0; attempt < 2; ++attempt) {
      std::unique_ptr<Update> update;
      stay([&] { update = store->begin(3, filesOf(3)); });
      for (const ModelFile& file : update ? filesOf(3) : std::vector<ModelFile>()) {
        stay([&] { write(*update, file, attempt); });
      }
      if (update && attempt == 1) {
        step(3, [&] { update->activate(); });
      }
    }
    step(2, [&] { store->activate(2); });
    committed_.clear();
    stay([&] { store->trimExcept({}); });
    stay([&] { EXPECT_TRUE(store->verify().empty() || hasStruck()); });
    step(std::nullopt, [&] { store->deactivate(); });
    step(4, [&] { update(*store, 4); });
    stay([&] { store->close(); });
    store.reset();
    cutPower();
  }

  bool hasStruck() const { return strike_.hasStruck(); }

 private:
  /// Half of a file at first, the rest later.
  void write(Update& update, const ModelFile& file, int attempt) {
    const auto missing = update.missing();
    if (std::find(missing.begin(), missing.end(), file) == missing.end()) {
      return;
    }
    const std::string bytes = bytesOf(file.type(), 3);
    const auto out = update.write(file);
    const auto offset = static_cast<std::size_t>(out->offset());
    const bool isCut = attempt == 0 && file.type() == kCapability.types()[1];
    out->write(bytes.data() + offset, isCut ? bytes.size() / 2 - offset : bytes.size() - offset);
    if (!isCut) {
      out->commit();
      committed_.insert(file.sha256());
    }
  }

  /// Whatever happened: the next store of the root tells the same as this one.
  void agree(ModelStore& store) {
    if (!strike_.hasStruck() || strike_.isDeath() || testing::Test::HasFailure()) {
      return;
    }
    std::shared_ptr<const Snapshot> told;
    if (!survives([&] { told = store.snapshot(); })) {
      return;  // It has been closed.
    }
    SimulatedDisk disk(disk_.now());
    const auto next = DiskModelStore::open(kRoot, kCapability, kBudget, disk.environment());
    EXPECT_EQ(told->active, next->snapshot()->active);
    EXPECT_EQ(told->versions, next->snapshot()->versions);
    EXPECT_EQ(1u, may_.count(told->active));
  }

  void cutPower() {
    if (!strike_.isOver()) {
      return;  // The life without a fault has all that comes before it.
    }
    std::string expectation;
    for (const auto& version : may_) {
      expectation += version ? std::to_string(*version) + ' ' : "none ";
    }
    for (const std::string& digest : committed_) {
      expectation += digest;
    }
    cuts_.at(disk_, expectation, [this](const Image& image) { check(image); });
  }

  void check(const Image& image) {
    SimulatedDisk disk(image);
    const auto store = DiskModelStore::open(kRoot, kCapability, kBudget, disk.environment());
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

  SimulatedDisk disk_;
  Strike strike_;
  PowerCuts& cuts_;
  std::set<std::optional<int>> may_{2};  // Be active.
  std::set<std::string> committed_;      // Digests of files that no update is to list as missing.
};

/// A root in which version 2 is active and 1 is complete, and that has files of version 4.
Image filledRoot() {
  SimulatedDisk disk;
  const auto store = DiskModelStore::open(kRoot, kCapability, kBudget, disk.environment());
  update(*store, 1);
  update(*store, 2);
  store->close();
  Image image = disk.now();
  const std::vector<std::string>& types = kCapability.types();
  image["raw"] = bytesOf(types[0], 4);
  image["a%/b"] = bytesOf(types[1], 4);
  image["a%/"] = "";
  image["extra/"] = "";
  image["extra/raw"] = "of the raw file";
  return image;
}

TEST(CrashStates, keepTheActiveVersionWhole) {
  const SoftErrors softErrors;
  PowerCuts cuts(8);
  ModelLife(filledRoot(), Strike(Fault::None, 1), cuts).live();
}

class FaultyLife : public testing::TestWithParam<Fault> {};
INSTANTIATE_TEST_SUITE_P(, FaultyLife,
                         testing::Values(Fault::Eio, Fault::Enospc, Fault::Edquot, Fault::Memory,
                                         Fault::Death));

TEST_P(FaultyLife, ofAModelStoreKeepsTheActiveVersionWhole) {
  const SoftErrors softErrors;
  const Image image = filledRoot();
  PowerCuts cuts(4);
  bool hasStruck = true;
  for (int call = 1; hasStruck && !HasFailure(); ++call) {
    SCOPED_TRACE("call " + std::to_string(call));
    ModelLife life(image, Strike(GetParam(), call), cuts);
    life.live();
    hasStruck = life.hasStruck();
  }
}

/// What an entry may be found to be: its content and its extra bytes.
struct Found {
  std::optional<std::string> content, extra = {};

  bool operator<(const Found& other) const {
    return std::tie(content, extra) < std::tie(other.content, other.extra);
  }
};

class FileLife {
 public:
  FileLife(const Image& image, Strike strike, PowerCuts& cuts)
      : disk_(image), strike_(strike), cuts_(cuts) {
    disk_.hook = [this](std::string_view call, const std::string& name) {
      if (isChange(call)) {
        cutPower();
      }
      strike_.pass(name);
    };
  }

  /// Writes, replaces, gives extra bytes, removes, evicts, and resumes.
  void live() {
    std::unique_ptr<FileStore> store;
    if (!survives([&] { store = DiskFileStore::open(kRoot, 60, disk_.environment()); })) {
      return;
    }
    step("key", {"old"}, [&] { put(*store->write("key"), "old"); });
    giveExtra(*store, "extra of old");
    step("key", {"newer"}, [&] { put(*store->write("key"), "newer"); });
    giveExtra(*store, "extra of newer");
    step("a/b", {"slash"}, [&] { put(*store->write("a/b"), "slash"); });
    step("key", {}, [&] { store->remove("key"); });
    const std::string known(40, 'x');
    survives([&] { store->write("known", 40, sha256(known))->write(known.data(), 20); });
    step("known", {known}, [&] {
      const auto out = store->write("known", 40, sha256(known));
      const auto offset = static_cast<std::size_t>(out->offset());
      EXPECT_EQ(hasStruck() ? offset : 20, offset);
      put(*out, known.substr(offset));
    });
    may_["a/b"].insert(Found{});
    may_["known"].insert(Found{});
    step("large", {std::string(50, 'y')},
         [&] { put(*store->write("large"), std::string(50, 'y')); });
    survives([&] { store->close(); });
    store.reset();
    cutPower();
  }

  bool hasStruck() const { return strike_.hasStruck(); }

 private:
  /// To whatever content there is.
  void giveExtra(FileStore& store, const std::string& bytes) {
    const Image now = disk_.now();
    if (now.count("key") != 0) {
      const std::string content = now.at("key");
      step("key", {content, bytes}, [&] { store.setExtra("key", {bytes.begin(), bytes.end()}); });
      may_["key"].insert({content});  // Until it is replaced, its extra bytes go first.
    }
  }

  template <class Call>
  void step(const std::string& key, const Found& result, const Call& call) {
    may_[key].insert(result);
    if (survives(call)) {
      may_[key] = {result};
    }
  }

  void cutPower() {
    if (!strike_.isOver()) {
      return;
    }
    std::string expectation;
    for (const auto& [key, founds] : may_) {
      for (const Found& found : founds) {
        expectation += key + found.content.value_or("-") + found.extra.value_or("-") + ' ';
      }
    }
    cuts_.at(disk_, expectation, [this](const Image& image) { check(image); });
  }

  void check(const Image& image) {
    SimulatedDisk disk(image);
    const auto store = DiskFileStore::open(kRoot, 60, disk.environment());
    Image now = disk.now();
    for (const auto& [key, founds] : may_) {
      Found found;
      if (store->get(key)) {
        found.content = now[nameOfKey(key)];
        if (const auto bytes = store->extra(key)) {
          found.extra.emplace(bytes->begin(), bytes->end());
        }
      }
      EXPECT_EQ(1u, founds.count(found))
          << key << ": " << found.content.value_or("none") << ", " << found.extra.value_or("none");
    }
    put(*store->write("another"), std::string(60, 'z'));
    EXPECT_EQ(60, store->size());
  }

  SimulatedDisk disk_;
  Strike strike_;
  PowerCuts& cuts_;
  std::map<std::string, std::set<Found>> may_{
      {"key", {Found{}}}, {"a/b", {Found{}}}, {"known", {Found{}}}, {"large", {Found{}}}};
};

TEST(CrashStates, keepCommittedEntriesAndTheirExtraBytes) {
  const SoftErrors softErrors;
  PowerCuts cuts(8);
  FileLife({}, Strike(Fault::None, 1), cuts).live();
}

TEST_P(FaultyLife, ofAFileStoreKeepsCommittedEntries) {
  const SoftErrors softErrors;
  PowerCuts cuts(5);
  bool hasStruck = true;
  for (int call = 1; hasStruck && !HasFailure(); ++call) {
    SCOPED_TRACE("call " + std::to_string(call));
    FileLife life({}, Strike(GetParam(), call), cuts);
    life.live();
    hasStruck = life.hasStruck();
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
