// modelcache_random [STEPS]: compares random operations on a real root with a simple model:
// results, files, extra bytes and metadata.json; and as many operations of a FileStore. A failure
// prints the seed; MODELCACHE_SEED replays it.

#include <algorithm>
#include <ctime>
#include <iostream>
#include <numeric>
#include <optional>
#include <tuple>

#include "delivery/FileCache/CacheMetadata.h"
#include "delivery/FileCache/createFileCache.h"
#include "tests/cpp/Errors.h"
#include "tests/cpp/RandomFileStore.h"
#include "tests/cpp/Seed.h"
#include "tests/cpp/TemporaryDirectory.h"
#include "tests/cpp/reading.h"

namespace {

using namespace zentrel::vistabase::ardelivery;
using Files = std::map<std::string, std::string>;
using Records = std::map<std::string, std::pair<std::int64_t, std::int64_t>>;  // Size, last access.

constexpr std::int64_t kBudget = 100;
const std::vector<std::string> kKeys = {"a", "b", "c", "d:", "%e", "\xFFg", "h..i", "dir", ".dot"};

std::string escaped(const std::string& key) {
  return key == "d:" ? "d%:" : key == "d%:" ? "d%%:" : key;
}

std::int64_t total(const Records& records) {
  const auto add = [](std::int64_t sum, auto& each) { return sum + each.second.first; };
  return std::accumulate(records.begin(), records.end(), std::int64_t{0}, add);
}

/// What the root should contain, in the simplest form.
struct Model {
  Files files;   // "dir" stands for the directory's one file.
  Files extras;  // By the names of their entries.
  std::optional<Records> stored;

  auto all() const { return std::tie(files, extras, stored); }

  Records reload() {
    Records records;
    for (const auto& [name, content] : files) {
      if (stored && stored->count(name) != 0) {
        records[name] = stored->at(name);
      } else if (name[0] != '.') {
        records[name] = {content.size(), 0};
      }
    }
    if (records != stored.value_or(Records())) {
      stored = records;
    }
    return records;
  }
  /// Removes by key; `records` becomes the records in memory.
  bool erase(const std::string& key, Records& records) {
    const std::string name = escaped(key);
    records = reload();
    const bool isThere = files.erase(name) != 0;
    if (isThere) {
      records.erase(name);
      extras.erase(name);
    }
    return isThere;
  }
  void commit(const std::string& name, std::int64_t size) {
    Records records = reload();
    if (records.count(name) != 0) {
      records[name].first = size;
    }
    for (Records rest = records; total(rest) > kBudget && !rest.empty();) {
      const auto oldest = std::min_element(rest.begin(), rest.end(), [](auto& left, auto& right) {
        return left.second.second < right.second.second;
      });
      erase(oldest->first, records);
      rest.erase(oldest);
    }
    stored = records;
  }
};

class Driver {
 public:
  explicit Driver(unsigned seed) : random_(seed) {}

  /// One operation, or a change behind the cache's back; false if the outcome differs.
  bool step() {
    using Step = bool (Driver::*)();
    constexpr Step steps[] = {
        &Driver::insertAndLock, &Driver::commit,        &Driver::commitSize,
        &Driver::unlock,        &Driver::getCacheEntry, &Driver::getCacheEntryWithoutPromotion,
        &Driver::updateExtra,   &Driver::getAllMetas,   &Driver::memContains,
        &Driver::remove,        &Driver::getSize,       &Driver::clear,
        &Driver::writeFile,     &Driver::removeFile,    &Driver::removeMetadata};
    key_ = kKeys[pick(kKeys.size())];
    name_ = escaped(key_);
    isThere_ = model_.files.count(name_) != 0;
    const bool same = (this->*steps[pick(std::size(steps))])();
    return same && errors_.take().empty() && disk().all() == model_.all();
  }

 private:
  bool insertAndLock() {
    model_.reload();
    model_.extras.erase(name_);
    return cache_->insertAndLock(key_)->path == root_ / name_;
  }
  bool commit() {
    makeAgesDistinct();
    if (isThere_) {
      model_.commit(escaped(name_), static_cast<std::int64_t>(model_.files[name_].size()));
    }
    cache_->commit(key_);
    return errors_.take().empty() == isThere_;
  }
  bool commitSize() {
    makeAgesDistinct();
    const auto size = static_cast<std::int64_t>(pick(60));
    model_.commit(name_, size);
    return cache_->commit(key_, size), true;
  }
  bool unlock() {
    model_.stored = model_.reload();
    return cache_->unlock(key_), true;
  }
  bool getCacheEntry() {
    const Records records = model_.reload();
    const std::int64_t start = std::time(nullptr);  // Which lags by some milliseconds.
    const bool same = (cache_->getCacheEntry(key_) != nullptr) == isThere_;
    const auto stored = disk().stored.value_or(Records());
    model_.stored = isThere_ ? records : model_.stored;
    if (isThere_ && records.count(name_) != 0 && stored.count(name_) != 0) {
      const std::int64_t time = stored.at(name_).second;
      const bool isNow =
          time >= 1000 * start && time < 1000 * (std::int64_t{std::time(nullptr)} + 2);
      model_.stored->at(name_).second = isNow ? time : -1;
    }
    return same;
  }
  bool getCacheEntryWithoutPromotion() {
    return (cache_->getCacheEntryWithoutPromotion(key_) != nullptr) == isThere_;
  }
  bool updateExtra() {
    const std::string extra(pick(5), 'x');
    const bool known = model_.reload().count(name_) != 0;
    if (known) {
      model_.extras[name_] = extra;
    }
    return cache_->updateExtra(key_, BytesVector(extra.begin(), extra.end())) == known;
  }
  bool getAllMetas() {
    Files expected, actual;
    for (const auto& [name, record] : model_.reload()) {
      if (model_.extras.count(name) != 0) {
        expected[name] = model_.extras[name];
      }
    }
    for (const auto& [name, meta] : cache_->getAllMetas()) {
      actual[name].assign(meta.extra.begin(), meta.extra.end());
    }
    return actual == expected;
  }
  bool memContains() {
    const bool known = model_.reload().count(name_) != 0;
    return (cache_->memContains(key_) == IFileCache::MemContainsStatus::Present) == known;
  }
  bool remove() {
    Records records;
    const bool removed = model_.erase(key_, records);
    model_.stored = records;
    return cache_->remove(key_) == removed;
  }
  bool getSize() { return cache_->getSize() == total(model_.reload()); }
  bool clear() {
    if (pick(20) != 0) {
      return true;
    }
    cache_->clear();
    model_ = Model();
    return boost::filesystem::create_directory(root_.path());
  }
  bool writeFile() {
    model_.files[name_] = std::string(pick(60), 'x');
    return root_.write(name_ == "dir" ? "dir/file" : name_, model_.files[name_]), true;
  }
  bool removeFile() {
    return (boost::filesystem::remove_all(root_ / name_) != 0) == (model_.files.erase(name_) != 0);
  }
  bool removeMetadata() {
    return boost::filesystem::remove(root_ / "metadata.json") ==
           std::exchange(model_.stored, {}).has_value();
  }

  std::size_t pick(std::size_t count) { return random_() % count; }

  /// Rewrites metadata.json behind the cache's back, since which of two entries of one age is
  /// evicted is unspecified. At most one file stays unrecorded, and so of age 0.
  void makeAgesDistinct() {
    Records records = model_.reload();
    if (!records.empty() && pick(2) == 0) {
      records.erase(records.begin());
    }
    std::vector<std::pair<std::string, CacheMetadataEntry>> entries;
    for (auto& [name, record] : records) {
      record.second = static_cast<std::int64_t>(100 * (1 + pick(100)) + entries.size());
      entries.push_back({name, {record.first, record.second, false}});
    }
    root_.write("metadata.json", CacheMetadataSerializer().serialize(CacheMetadata(entries)));
    model_.stored = records;
  }

  Model disk() {
    Model disk;
    for (const auto& entry : boost::filesystem::recursive_directory_iterator(root_.path())) {
      const auto path = entry.path().lexically_relative(root_.path());
      if (path == "metadata.json") {
        disk.stored = meaning(*CacheMetadataSerializer().deserialize(root_.read(path.string())));
      } else if (is_regular_file(entry)) {
        const std::string name = path == "dir/file" ? "dir" : path.filename().string();
        (path.parent_path() == "extra" ? disk.extras : disk.files)[name] =
            root_.read(path.string());
      }
    }
    return disk;
  }

  std::mt19937 random_;
  SoftErrorRecorder errors_;
  TemporaryDirectory root_;
  std::shared_ptr<IFileCache> cache_ = createFileCache(root_.path(), kBudget);
  Model model_;
  std::string key_, name_;  // Of this step.
  bool isThere_ = false;    // Whether the key has a file.
};

}  // namespace

int main(int argumentCount, char** arguments) {
  const long steps = argumentCount > 1 ? std::strtol(arguments[1], nullptr, 10) : 10'000;
  const unsigned seed = givenOrNewSeed();
  Driver cache(seed);
  FileStoreDriver store(seed);
  for (long step = 1; step <= steps; ++step) {
    const char* const wrong = !cache.step() ? "raw cache" : !store.step() ? "store" : nullptr;
    if (wrong != nullptr) {
      std::cerr << "MODELCACHE_SEED=" << seed << ": wrong step " << step << " of the " << wrong
                << "\n";
      return 1;
    }
  }
}
