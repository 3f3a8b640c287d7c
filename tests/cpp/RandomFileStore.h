#pragma once

#include <random>

#include "delivery/FileNames.h"
#include "store/DiskFileStore.h"
#include "tests/store/SimulatedDisk.h"

namespace zentrel::vistabase::ardelivery {

/// Compares random calls of a FileStore with a simple model: results, files and extra bytes.
class FileStoreDriver {
 public:
  explicit FileStoreDriver(unsigned seed) : random_(seed) { reopen(); }

  /// One call, or a change behind the store's back; false if the outcome differs.
  bool step() {
    const std::size_t number = pick(6), kind = pick(20);
    key_ = std::string(number + 1, 'k');
    const bool isThere = items_.count(key_) != 0 && !items_[key_].isGone;
    const bool same = kind < 4    ? write(std::string(pick(120), 'x'), "")
                      : kind < 8  ? write(std::string(30 + 15 * number, 'y'), kResumePrefix)
                      : kind < 11 ? get(isThere)
                      : kind < 15 ? extra(isThere)
                      : kind < 18 ? remove(isThere)
                                  : measure();
    Image expected = extras_, actual = disk_.now();
    for (const auto& [name, item] : items_) {
      item.isGone ? void() : void(expected[name] = item.bytes);
    }
    for (const char* own : {".store", ".lock", "extra/"}) {
      actual.erase(own);
    }
    return same && actual == expected;
  }

 private:
  /// An entry, or a resumable part, which counts as one.
  struct Item {
    std::string bytes;
    std::int64_t used = 0;  // On a simulated disk, parts are older than all entries.
    bool isGone = false;    // Deleted by others, unnoticed by the store.
  };

  /// Writes everything; with a prefix, known content, which may be resumed and left incomplete.
  bool write(const std::string& whole, std::string_view prefix) {
    const std::string digest = sha256(whole), part = std::string(prefix) + digest;
    const auto size = static_cast<std::int64_t>(whole.size());
    std::unique_ptr<EntryWriter> out;
    const bool isTooLarge = !prefix.empty() && whole.size() > budget_;
    const bool isOpen = succeeds(
        [&] { out = prefix.empty() ? store_->write(key_) : store_->write(key_, size, digest); });
    if (isTooLarge || !isOpen) {
      return isTooLarge != isOpen;
    }
    Item item = items_.emplace(part, Item{"", ++writes_}).first->second;
    const bool isResumed = out->offset() == static_cast<std::int64_t>(item.bytes.size());
    const std::size_t missing = whole.size() - item.bytes.size();
    const std::string more =
        whole.substr(item.bytes.size(), prefix.empty() ? missing : pick(missing + 1));
    item = more.empty() ? item : Item{item.bytes + more, ++writes_};
    const bool isDone = item.bytes == whole && whole.size() <= budget_;
    isDone || prefix.empty() ? void(items_.erase(part)) : void(items_[part] = item);
    isDone ? place(whole) : void();
    return isResumed && isDone == succeeds([&] {
                          more.empty() ? void() : out->write(more.data(), more.size());
                          out->commit();
                        });
  }
  bool get(bool isThere) {
    isThere ? void(items_[key_].used = ++uses_) : void(items_.erase(key_));
    return store_->get(key_) == (isThere ? std::optional("/root/" + key_) : std::nullopt);
  }
  bool extra(bool isThere) {
    const auto found = extras_.find("extra/" + key_);
    const bool isExpected = isThere && found != extras_.end();
    const auto told = store_->extra(key_);
    const bool same =
        isExpected ? told && std::string(told->begin(), told->end()) == found->second : !told;
    const BytesVector bytes(pick(5), 'x');
    isThere ? void(extras_["extra/" + key_].assign(bytes.begin(), bytes.end())) : void();
    return same && store_->setExtra(key_, bytes) == isThere;
  }
  bool remove(bool isThere) {
    if (pick(2) == 0 && isThere) {
      items_[key_].isGone = true;
      return disk_.environment().openRoot(kRoot)->remove(key_);  // By others.
    }
    drop(key_);
    return store_->remove(key_) == isThere;
  }
  bool measure() {
    forgetWhatIsGone();
    std::size_t keys = 0, total = 0;
    for (const auto& [name, item] : items_) {
      keys += name[0] == 'k' ? 1u : 0u;
      total += name[0] == 'k' ? item.bytes.size() : 0;
    }
    const bool same =
        store_->keys().size() == keys && store_->size() == static_cast<std::int64_t>(total);
    pick(2) == 0 ? reopen() : void();
    store_->setMaxSizeBytes(static_cast<std::int64_t>(budget_ = 60 + pick(200)));
    return same;
  }

  std::size_t pick(std::size_t count) { return random_() % count; }
  /// False if there is no room, or bytes are missing.
  template <class Call>
  static bool succeeds(const Call& call) {
    try {
      return call(), true;
    } catch (const StoreError&) {
      return false;
    }
  }
  void drop(const std::string& name) {
    items_.erase(name);
    extras_.erase("extra/" + name);
  }
  /// Replaces the entry, evicting the least recently used others.
  void place(const std::string& bytes) {
    drop(key_);
    for (std::size_t total = budget_ + 1; total > budget_;) {
      total = bytes.size();
      std::pair oldest(INT64_MAX, std::string());
      for (const auto& [name, item] : items_) {
        total += item.bytes.size();
        oldest = std::min(oldest, {item.used, name});
      }
      total > budget_ ? drop(oldest.second) : void();
    }
    items_[key_] = {bytes, ++uses_};
  }
  void forgetWhatIsGone() {
    for (auto each = items_.begin(); each != items_.end();) {
      each = each->second.isGone ? items_.erase(each) : std::next(each);
    }
  }
  void reopen() {
    store_.reset();
    const auto budget = static_cast<std::int64_t>(budget_);
    store_ = DiskFileStore::open(kRoot, budget, disk_.environment());
    forgetWhatIsGone();
  }

  std::mt19937 random_;
  SimulatedDisk disk_;
  std::size_t budget_ = 150;
  std::int64_t uses_ = std::int64_t{1} << 60, writes_ = 0;
  std::unique_ptr<FileStore> store_;
  std::string key_;  // Of this step; also the name of its file.
  std::map<std::string, Item> items_;
  Image extras_;  // Also of entries deleted by others.
};

}  // namespace zentrel::vistabase::ardelivery
