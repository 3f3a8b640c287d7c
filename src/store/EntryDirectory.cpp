#include "store/EntryDirectory.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>

#include "delivery/FileNames.h"
#include "store/StoreError.h"
#include "store/fileTrees.h"
#include "store/noRoom.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
// Later dates of files, which leave no room for further uses, count as this one: in the year 2255.
constexpr std::int64_t kLatest = 9'000'000'000 * kSecond;

bool isCounted(std::string_view name) {
  return isEntryName(name) || beginsWith(name, kResumePrefix);
}

std::int64_t now() {
  using std::chrono::nanoseconds;
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<nanoseconds>(sinceEpoch).count();
}

}  // namespace

void EntryDirectory::reload() {
  std::map<std::string, Record> found;
  for (const std::string& name : root_.list()) {
    const FileStatus status = isCounted(name) ? root_.status(name) : FileStatus();
    if (!status.isAbsent()) {
      // The cached time is more precise if the file system stores only whole seconds.
      const auto known = records_.find(name);
      const std::int64_t used = known == records_.end() ? 0 : known->second.used;
      found[name] = {sizeOf(root_, name, status),
                     std::max(std::min(status.modified, kLatest), used)};
    }
  }
  records_.clear();
  byUse_.clear();
  total_ = 0;
  isLoaded_ = true;
  for (const auto& [name, record] : found) {
    set(name, record);
  }
}

std::int64_t EntryDirectory::total() {
  ensureLoaded();
  return total_;
}

std::int64_t EntryDirectory::size(const std::string& name) {
  ensureLoaded();
  const auto found = records_.find(name);
  return found == records_.end() ? 0 : found->second.size;
}

std::vector<std::string> EntryDirectory::names() {
  ensureLoaded();
  std::vector<std::string> names;
  for (const auto& [name, record] : records_) {
    names.push_back(name);
  }
  return names;
}

bool EntryDirectory::use(const std::string& name) {
  ensureLoaded();
  const FileStatus status = root_.status(name);
  if (status.isAbsent()) {
    forget(name);
    return false;
  }
  const auto known = records_.find(name);
  const bool isMeasured = status.isDirectory() && known != records_.end();
  const std::int64_t size = isMeasured ? known->second.size : sizeOf(root_, name, status);
  // Another name of the file may be outside the root, which keeps its date.
  const bool isShared = status.isRegular() && !status.isOwn();
  set(name, {size, isShared ? newest_ + 1 : touch(name)});
  return true;
}

void EntryDirectory::measure(const std::string& name) {
  ensureLoaded();
  const FileStatus status = root_.status(name);
  if (status.isAbsent()) {
    forget(name);
  } else {
    set(name, {sizeOf(root_, name, status), std::min(status.modified, kLatest)});
  }
}

/// Calls `change`, which replaces or removes an entry, once its extra bytes are gone. They come
/// back if it fails.
bool EntryDirectory::changeContent(const std::string& name, FunctionRef<bool()> change) {
  const std::optional<std::string> extra = extras_.remove(name);
  try {
    return change();
  } catch (...) {
    if (extra) {
      extras_.replace(name, *extra);
    }
    throw;
  }
}

void EntryDirectory::place(const std::string& part, const std::string& name) {
  ensureLoaded();
  const std::int64_t size = root_.status(part).size;
  changeContent(name, [&] {
    renameOver(root_, part, root_, name);
    return true;
  });
  set(name, {size, touch(name)});
}

bool EntryDirectory::drop(const std::string& name) {
  ensureLoaded();
  const bool isDropped = changeContent(name, [&] { return removeTree(root_, name); });
  forget(name);
  return isDropped;
}

std::vector<std::string> EntryDirectory::leastRecentlyUsed(std::int64_t bytes, IsKept isKept) {
  ensureLoaded();
  std::vector<std::string> names;
  for (auto each = byUse_.begin(); bytes > 0 && each != byUse_.end(); ++each) {
    const std::string& name = each->second;
    if (!isKept(name)) {
      bytes -= records_[name].size;
      names.push_back(name);
    }
  }
  return names;
}

void EntryDirectory::makeRoom(std::int64_t bytes, std::int64_t budget, IsKept isKept) {
  const auto lacking = [&] {
    return (bytes < 0 ? total_ + bytes : addSizes(total_, bytes)) - budget;
  };
  for (const bool isLastTry : {false, true}) {
    ensureLoaded();
    std::vector<std::string> names;
    std::int64_t freed = 0;
    if (lacking() > 0) {
      names = leastRecentlyUsed(lacking(), isKept);
    }
    for (const std::string& name : names) {
      freed = addSizes(freed, size(name));
    }
    if (freed >= lacking()) {
      std::for_each(names.begin(), names.end(), [this](const std::string& name) { drop(name); });
      return;
    }
    if (isLastTry) {
      throw noRoom(joined("no room for ", bytes, " bytes: ", total_ - freed, " of ", budget,
                          " are used by entries that must stay"),
                   {}, root_, budget + lacking() - freed, budget);
    }
    reload();  // Someone may have deleted files behind our back.
  }
}

void EntryDirectory::dropUnfinished(const std::set<std::string>& keptParts) {
  for (const std::string& name : root_.list()) {
    if (beginsWith(name, kNewPrefix) ||
        (beginsWith(name, kPartPrefix) && keptParts.count(name) == 0)) {
      removeTree(root_, name);
    }
  }
}

void EntryDirectory::ensureLoaded() {
  if (!isLoaded_) {
    reload();
  }
}

void EntryDirectory::set(const std::string& name, Record record) {
  forget(name);
  records_[name] = record;
  byUse_.emplace(record.used, name);
  total_ = addSizes(total_, record.size);
  newest_ = std::max(newest_, record.used);
}

void EntryDirectory::forget(const std::string& name) {
  const auto found = records_.find(name);
  if (found != records_.end()) {
    const std::int64_t size = found->second.size;
    byUse_.erase({found->second.used, name});
    records_.erase(found);
    if (total_ != std::numeric_limits<std::int64_t>::max()) {
      total_ -= size;
      return;
    }
    total_ = 0;  // It was saturated.
    for (const auto& [other, record] : records_) {
      total_ = addSizes(total_, record.size);
    }
  }
}

/// Sets the time of last use to now, but later than any other, whatever the clock says.
std::int64_t EntryDirectory::touch(const std::string& name) {
  std::int64_t date = std::max(newest_ + 1, now());
  try {
    root_.touch(name, date);
    if (root_.status(name).modified < date) {  // The file system stores only whole seconds.
      date += kSecond - date % kSecond;
      root_.touch(name, date);
    }
  } catch (const StoreError&) {
    // On a read-only disk, the order is kept only while the store is open.
  }
  return date;
}

}  // namespace zentrel::vistabase::ardelivery
