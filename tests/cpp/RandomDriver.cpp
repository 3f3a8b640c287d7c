// modelcache_random [STEPS]: random operations on a real root, each compared with a plain model of
// the contract: result, files, extra bytes and metadata.json. Prints the seed, which
// MODELCACHE_SEED replays.

#include <algorithm>
#include <boost/json/parse.hpp>
#include <chrono>
#include <iostream>
#include <map>

#include "delivery/FileCache/createFileCache.h"
#include "tests/cpp/Seed.h"
#include "tests/cpp/SoftErrorRecorder.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace {

using namespace zentrel::vistabase::ardelivery;
using Status = IFileCache::MemContainsStatus;

constexpr std::int64_t kBudget = 100;
const std::vector<std::string> kKeys = {"a", "b", "c", "d:", "%e", "\xFFg", "h..i", "dir", ".dot"};

struct Record {
  std::int64_t size, lastAccess;
  bool operator==(const Record& o) const { return size == o.size && lastAccess == o.lastAccess; }
};
using Records = std::map<std::string, Record>;

std::int64_t now() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

std::string escaped(const std::string& key) {
  return key == "d:" ? "d%:" : key == "d%:" ? "d%%:" : key;
}

/// What has to be in the root, in the simplest form that can hold it.
struct Model {
  std::map<std::string, std::string> files;  // "dir" stands for the directory's one file.
  std::map<std::string, std::string> extras;
  bool saved = false;
  Records stored;  // metadata.json, if `saved`.

  Records reload() {
    Records records;
    for (const auto& [name, content] : files) {
      const auto known = stored.find(name);
      if (saved && known != stored.end()) {
        records.insert(*known);
      } else if (name[0] != '.') {
        records[name] = {static_cast<std::int64_t>(content.size()), 0};
      }
    }
    if (records != (saved ? stored : Records())) {
      save(records);
    }
    return records;
  }
  void save(const Records& records) {
    stored = records;
    saved = true;
  }
  /// What removal by that key does; `records` are then the records in memory.
  bool erase(const std::string& key, Records& records) {
    const std::string name = escaped(key);
    records = reload();
    if (files.erase(name) == 0) {
      return false;
    }
    records.erase(name);
    extras.erase(name);
    return true;
  }
  void commit(const std::string& name, std::int64_t size) {
    Records records = reload();
    if (records.count(name) != 0) {
      records[name].size = size;
    }
    std::int64_t total = 0;
    std::map<std::int64_t, std::pair<std::string, std::int64_t>> byAge;
    for (const auto& [recorded, record] : records) {
      total += record.size;
      byAge[record.lastAccess] = {recorded, record.size};
    }
    for (auto oldest = byAge.begin(); oldest != byAge.end() && total > kBudget; ++oldest) {
      total -= oldest->second.second;
      erase(oldest->second.first, records);
    }
    save(records);
  }
  std::int64_t total() {
    std::int64_t sum = 0;
    for (const auto& [name, record] : reload()) {
      sum += record.size;
    }
    return sum;
  }
};

class Driver {
 public:
  explicit Driver(unsigned seed) : random_(seed) {}

  bool step() {
    const std::string key = kKeys[pick(kKeys.size())];
    const std::string name = escaped(key);
    const bool isThere = model_.files.count(name) != 0;
    const std::int64_t start = now();
    Records records;
    bool same = true;
    switch (pick(15)) {
      case 0:
        model_.reload();
        model_.extras.erase(name);
        same = cache_->insertAndLock(key)->path == root_ / name;
        break;
      case 1:
        makeAgesDistinct();
        if (isThere) {
          model_.commit(escaped(name), static_cast<std::int64_t>(model_.files[name].size()));
        }
        cache_->commit(key);
        same = errors_.records().empty() == isThere;
        errors_.records().clear();
        break;
      case 2: {
        makeAgesDistinct();
        const auto size = static_cast<std::int64_t>(pick(60));
        model_.commit(name, size);
        cache_->commit(key, size);
        break;
      }
      case 3:
        model_.save(model_.reload());
        cache_->unlock(key);
        break;
      case 4:
      case 5:
        records = model_.reload();
        if (isThere) {
          model_.save(records);
          touched_ = name;
        }
        same = (cache_->getCacheEntry(key) != nullptr) == isThere;
        break;
      case 6:
        same = (cache_->getCacheEntryWithoutPromotion(key) != nullptr) == isThere;
        break;
      case 7: {
        const std::string extra(pick(5), 'x');
        const bool known = model_.reload().count(name) != 0;
        if (known) {
          model_.extras[name] = extra;
        }
        same = cache_->updateExtra(key, BytesVector(extra.begin(), extra.end())) == known;
        break;
      }
      case 8: {
        std::map<std::string, std::string> expected, actual;
        records = model_.reload();
        for (const auto& [extraName, extra] : model_.extras) {
          if (records.count(extraName) != 0) {
            expected[extraName] = extra;
          }
        }
        for (const auto& [metaName, meta] : cache_->getAllMetas()) {
          actual[metaName] = std::string(meta.extra.begin(), meta.extra.end());
        }
        same = actual == expected;
        break;
      }
      case 9:
        same = (cache_->memContains(key) == Status::Present) == (model_.reload().count(name) != 0);
        break;
      case 10:
        same = cache_->remove(key) == model_.erase(key, records);
        model_.save(records);
        break;
      case 11:
        same = cache_->getSize() == model_.total();
        break;
      case 12:
        if (pick(20) == 0) {
          cache_->clear();
          same = !root_.has("");
          std::filesystem::create_directory(root_.path());
          model_ = Model();
        }
        break;
      case 13:
        model_.files[name] = std::string(pick(60), 'x');
        root_.write(pathOf(name), model_.files[name]);
        break;
      default:
        if (pick(5) == 0) {
          std::filesystem::remove(root_ / "metadata.json");
          model_.saved = false;
        } else {
          std::filesystem::remove_all(root_ / name);
          model_.files.erase(name);
        }
    }
    return same && errors_.records().empty() && diskIsAsExpected(start);
  }

 private:
  std::size_t pick(std::size_t count) { return random_() % count; }
  static std::string pathOf(const std::string& name) { return name == "dir" ? "dir/file" : name; }

  /// Which of two entries of one age is evicted is left open: have it decided, behind the cache's
  /// back. At most one file may stay unrecorded, and so be of age 0.
  void makeAgesDistinct() {
    Records records = model_.saved ? model_.stored : Records();
    for (const auto& [name, content] : model_.files) {
      records.insert({name, {static_cast<std::int64_t>(content.size()), 0}});
    }
    if (!records.empty() && pick(2) == 0) {
      records.erase(records.begin());
    }
    std::vector<Record*> order;
    for (auto& [name, record] : records) {
      order.push_back(&record);
    }
    std::shuffle(order.begin(), order.end(), random_);
    std::string text;
    for (const auto& [name, record] : records) {
      const auto age = std::find(order.begin(), order.end(), &records[name]) - order.begin() + 1;
      records[name].lastAccess = age;
      text += (text.empty() ? "" : ",") + (R"({"key":")" + name + R"(","size":)") +
              std::to_string(record.size) + R"(,"lastAccess":)" + std::to_string(age) + "}";
    }
    root_.write("metadata.json", R"({"entries":[)" + text + "]}");
    model_.save(records);
  }

  Records recordsOnDisk() {
    Records records;
    if (root_.has("metadata.json")) {
      boost::json::parse_options options;
      options.allow_invalid_utf8 = true;
      const auto document = boost::json::parse(root_.read("metadata.json"), {}, options);
      for (const auto& entry : document.at("entries").as_array()) {
        records[entry.at("key").as_string().c_str()] = {entry.at("size").as_int64(),
                                                        entry.at("lastAccess").as_int64()};
      }
    }
    return records;
  }

  bool diskIsAsExpected(std::int64_t start) {
    const Records records = recordsOnDisk();
    const auto touched = model_.stored.find(std::exchange(touched_, ""));
    if (touched != model_.stored.end() && records.count(touched->first) != 0) {
      const std::int64_t time = records.at(touched->first).lastAccess;
      touched->second.lastAccess = time >= start && time <= now() ? time : -1;
    }
    if (root_.has("metadata.json") != model_.saved || (model_.saved && records != model_.stored)) {
      return false;
    }
    return std::all_of(kKeys.begin(), kKeys.end(), [this](const std::string& key) {
      const std::string name = escaped(key);
      const auto file = model_.files.find(name);
      const auto extra = model_.extras.find(name);
      return root_.has(name) == (file != model_.files.end()) &&
             root_.has("extra/" + name) == (extra != model_.extras.end()) &&
             (file == model_.files.end() || root_.read(pathOf(name)) == file->second) &&
             (extra == model_.extras.end() || root_.read("extra/" + name) == extra->second);
    });
  }

  std::mt19937 random_;
  SoftErrorRecorder errors_;
  TemporaryDirectory root_;
  std::shared_ptr<IFileCache> cache_ = createFileCache(root_.path(), kBudget);
  Model model_;
  std::string touched_;
};

}  // namespace

int main(int argumentCount, char** arguments) {
  const long steps = argumentCount > 1 ? std::strtol(arguments[1], nullptr, 10) : 10'000;
  Driver driver(announcedSeed());
  for (long step = 1; step <= steps; ++step) {
    if (!driver.step()) {
      std::cout << "step " << step << " came out differently\n";
      return 1;
    }
  }
  std::cout << steps << " steps as expected\n";
}
