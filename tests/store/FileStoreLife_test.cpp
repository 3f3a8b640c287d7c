#include <optional>
#include <set>

#include "store/DiskFileStore.h"
#include "store/FileKey.h"
#include "tests/store/Life.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;

/// An entry's content and its extra bytes.
using Found = std::pair<std::optional<std::string>, std::optional<std::string>>;

class FileStoreLife final : public Life {
 public:
  using Life::Life;

  /// Writes, replaces, attaches extra bytes, removes, resumes, and evicts.
  void live() override {
    std::unique_ptr<FileStore> store;
    if (!survives([&] { store = DiskFileStore::open(kRoot, 60, disk_.environment()); })) {
      return;
    }
    const auto write = [&](const std::string& key, const std::string& bytes) {
      change(key, {bytes, {}}, [&] { put(*store->write(key), bytes); });
    };
    const std::string known(40, 'x');
    write("key", "old");
    giveExtra(*store, "extra of old");
    write("key", "newer");
    giveExtra(*store, "extra of newer");
    write("a/b", "slash");
    change("key", {}, [&] { store->remove("key"); });
    survives([&] { store->write("known", 40, sha256(known))->write(known.data(), 20); });
    change("known", {known, {}}, [&] {
      const auto out = store->write("known", 40, sha256(known));
      EXPECT_TRUE(hasStruck() || out->offset() == 20);
      put(*out, known);
    });
    may_["a/b"].insert(Found());
    may_["known"].insert(Found());
    write("large", std::string(50, 'y'));
    survives([&] { store->close(); });
    store.reset();
    cutPower();
  }

 private:
  /// Attaches extra bytes to the entry "key", whatever its content.
  void giveExtra(FileStore& store, const std::string& bytes) {
    const Image now = disk_.now();
    if (now.count("key") != 0) {
      const Found bare(now.at("key"), std::nullopt), full(now.at("key"), bytes);
      change("key", full, [&] { store.setExtra("key", {bytes.begin(), bytes.end()}); });
      may_["key"].insert(bare);  // Replacing it removes the extra bytes first.
    }
  }

  template <class Call>
  void change(const std::string& key, const Found& result, const Call& call) {
    may_[key].insert(result);
    if (survives(call)) {
      may_[key] = {result};
    }
  }

  std::string expectation() const override { return testing::PrintToString(may_); }

  void check(SimulatedDisk& disk) const override {
    if (may_.at("key").count(Found()) == 0) {  // It holds entries.
      EXPECT_THROW(DiskModelStore::open(kRoot, kCapability, 60, disk.environment()),
                   std::invalid_argument);
    }
    const auto store = DiskFileStore::open(kRoot, 60, disk.environment());
    Image now = disk.now();
    for (const auto& [key, founds] : may_) {
      Found found;
      if (store->get(key)) {
        found.first = now[nameOfKey(key)];
        if (const auto bytes = store->extra(key)) {
          found.second.emplace(bytes->begin(), bytes->end());
        }
      }
      EXPECT_EQ(1u, founds.count(found)) << key << testing::PrintToString(found);
    }
    put(*store->write("another"), std::string(60, 'z'));
    EXPECT_EQ(60, store->size());
  }

  std::map<std::string, std::set<Found>> may_{
      {"key", {Found()}}, {"a/b", {Found()}}, {"known", {Found()}}, {"large", {Found()}}};
};

TEST(FaultyLife, keepsCommittedEntriesAndTheirExtraBytes) {
  liveWithEachFault<FileStoreLife>({});
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
