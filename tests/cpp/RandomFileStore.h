#pragma once

#include <algorithm>
#include <random>

#include "delivery/FileNames.h"
#include "store/DiskFileStore.h"
#include "store/FileKey.h"
#include "store/StoreError.h"
#include "tests/store/SimulatedDisk.h"

namespace zentrel::vistabase::ardelivery {

/// Random calls of a FileStore, each compared with a plain model of the contract: result, files and
/// extra bytes.
class FileStoreDriver {
 public:
  explicit FileStoreDriver(unsigned seed) : random_(seed) { reopen(); }

  /// One call, or a change behind the store's back; false when it came out differently.
  bool step() {
    using Step = bool (FileStoreDriver::*)();
    constexpr Step steps[] = {&FileStoreDriver::write,      &FileStoreDriver::resume,
                              &FileStoreDriver::get,        &FileStoreDriver::remove,
                              &FileStoreDriver::setExtra,   &FileStoreDriver::extra,
                              &FileStoreDriver::measure,    &FileStoreDriver::setBudget,
                              &FileStoreDriver::deleteFile, &FileStoreDriver::reopenOrClear};
    number_ = pick(std::size(kKeys));
    key_ = kKeys[number_];
    name_ = nameOfKey(key_);
    return (this->*steps[pick(std::size(steps))])() && diskIsAsExpected();
  }

 private:
  static constexpr const char* kKeys[] = {"a", "b", "c/d", "%", "e", "\U0001F600"};
  /// An entry, or a part that is kept, which counts as one.
  struct Item {
    std::string bytes;
    std::int64_t used = 0;  // On a simulated disk, parts are older than all entries.
    bool isGone = false;    // Which the store has not noticed yet.
  };

  bool write() {
    const std::string bytes(pick(120), static_cast<char>('a' + pick(26)));
    const auto out = store_->write(key_);
    const bool fits = size(bytes) <= budget_;
    if (fits) {
      place(bytes, "");
    }
    return fits == succeeds([&] {
             out->write(bytes.data(), bytes.size());
             out->commit();
           });
  }
  bool resume() {
    const std::string whole(30 + 15 * number_, 'k');
    const auto digest = newDigest_();
    digest->update(whole.data(), whole.size());
    const std::string sha256 = digest->finish(), part = std::string(kResumePrefix) + sha256;
    std::unique_ptr<EntryWriter> out;
    if (!succeeds([&] { out = store_->write(key_, size(whole), sha256); })) {
      return size(whole) > budget_;
    }
    const auto [kept, isNew] = items_.emplace(part, Item{"", ++writes_});
    const std::size_t offset = kept->second.bytes.size(), count = pick(whole.size() - offset + 1);
    if (out->offset() != static_cast<std::int64_t>(offset)) {
      return false;
    }
    if (count > 0) {
      out->write(whole.data(), count);
      kept->second = {whole.substr(0, offset + count), ++writes_};
    }
    const bool isWhole = offset + count == whole.size();
    if (isWhole) {
      place(whole, part);
    }
    return succeeds([&] { out->commit(); }) == isWhole;
  }
  bool get() {
    const bool isThere = has();
    if (isThere) {
      items_[name_].used = ++uses_;
    } else {
      items_.erase(name_);
    }
    return store_->get(key_) == (isThere ? std::optional(kRoot + ('/' + name_)) : std::nullopt);
  }
  bool remove() {
    const bool isThere = has();
    drop(name_);
    return store_->remove(key_) == isThere;
  }
  bool setExtra() {
    const BytesVector bytes(pick(5), 'x');
    if (has()) {
      extras_[name_].assign(bytes.begin(), bytes.end());
    }
    return store_->setExtra(key_, bytes) == has();
  }
  bool extra() {
    const auto found = extras_.find(name_);
    const auto bytes = store_->extra(key_);
    return has() && found != extras_.end()
               ? bytes && std::string(bytes->begin(), bytes->end()) == found->second
               : !bytes;
  }
  bool measure() {
    reload();
    std::int64_t total = 0;
    std::vector<std::string> keys;
    for (const auto& [name, item] : items_) {
      if (const auto key = keyOfName(name)) {
        total += size(item.bytes);
        keys.push_back(*key);
      }
    }
    std::vector<std::string> told = store_->keys();
    std::sort(told.begin(), told.end());
    std::sort(keys.begin(), keys.end());
    return told == keys && store_->size() == total;
  }
  bool setBudget() {
    budget_ = 60 + static_cast<std::int64_t>(pick(200));
    return store_->setMaxSizeBytes(budget_), true;
  }
  bool deleteFile() {
    if (has()) {
      items_[name_].isGone = true;
      disk_.environment().openRoot(kRoot)->remove(name_);
    }
    return true;
  }
  bool reopenOrClear() {
    if (pick(10) == 0) {
      reload();
      while (!items_.empty()) {
        drop(std::string(items_.begin()->first));
      }
      return store_->clear(), true;
    }
    return reopen(), true;
  }

  std::size_t pick(std::size_t count) { return random_() % count; }
  static std::int64_t size(const std::string& bytes) {
    return static_cast<std::int64_t>(bytes.size());
  }
  bool has() const { return items_.count(name_) != 0 && !items_.at(name_).isGone; }

  /// False if there is no room, or bytes are missing.
  template <class Call>
  static bool succeeds(const Call& call) {
    try {
      return call(), true;
    } catch (const StoreError& error) {
      const auto reason = error.reason();
      return reason != StoreError::Reason::NoRoom && reason != StoreError::Reason::TooShort;
    }
  }

  void drop(const std::string& name) {
    items_.erase(name);
    extras_.erase(name);
  }
  /// The entry's new content, for which the least recently used others go.
  void place(const std::string& bytes, const std::string& part) {
    items_.erase(part);
    items_.erase(name_);
    const auto isOver = [&] {
      std::int64_t total = size(bytes);
      for (const auto& [name, item] : items_) {
        total += size(item.bytes);
      }
      return total > budget_;
    };
    while (isOver()) {
      drop(std::string(std::min_element(items_.begin(), items_.end(), [](auto& one, auto& other) {
                         return one.second.used < other.second.used;
                       })->first));
    }
    extras_.erase(name_);
    items_[name_] = {bytes, ++uses_};
  }
  /// The store has listed its root.
  void reload() {
    for (auto each = items_.begin(); each != items_.end();) {
      each = each->second.isGone ? items_.erase(each) : std::next(each);
    }
  }
  void reopen() {
    store_.reset();
    store_ = DiskFileStore::open(kRoot, budget_, disk_.environment());
    reload();
  }
  bool diskIsAsExpected() const {
    Image expected, actual = disk_.now();
    for (const auto& [name, item] : items_) {
      if (!item.isGone) {
        expected[name] = item.bytes;
      }
    }
    for (const auto& [name, bytes] : extras_) {
      expected["extra/" + name] = bytes;
    }
    for (const char* own : {".store", ".lock", "extra/"}) {
      actual.erase(own);
    }
    return actual == expected;
  }

  std::mt19937 random_;
  SimulatedDisk disk_;
  const NewDigest newDigest_ = disk_.environment().newDigest;
  std::int64_t budget_ = 150, uses_ = std::int64_t{1} << 60, writes_ = 0;
  std::unique_ptr<FileStore> store_;
  std::map<std::string, Item> items_;
  std::map<std::string, std::string> extras_;  // Also of entries that are gone.
  std::size_t number_ = 0;                     // Of the key that the step is about,
  std::string key_, name_;                     // and its file.
};

}  // namespace zentrel::vistabase::ardelivery
