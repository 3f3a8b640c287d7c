#include "jni/StoreHandles.h"

#include <vector>

namespace zentrel::vistabase::ardelivery {

StoreHandles& StoreHandles::instance() {
  static StoreHandles& handles = *new StoreHandles;  // Threads keep running during exit.
  return handles;
}

std::int64_t StoreHandles::addAny(Entry entry) {
  const std::lock_guard<std::mutex> guard(mutex_);
  entries_.emplace(++last_, std::move(entry));
  return last_;
}

std::shared_ptr<void> StoreHandles::findAny(std::int64_t handle, std::type_index type) {
  const std::lock_guard<std::mutex> guard(mutex_);
  const auto found = entries_.find(handle);
  return found != entries_.end() && found->second.type == type ? found->second.object : nullptr;
}

void StoreHandles::remove(std::int64_t handle) {
  if (handle == 0) {  // Not an object, but the owner of all stores.
    return;
  }
  std::vector<std::shared_ptr<void>> removed;  // Destroyed without the lock, as that may block.
  const std::lock_guard<std::mutex> guard(mutex_);
  std::vector<std::int64_t> handles{handle};
  while (!handles.empty()) {
    const std::int64_t next = handles.back();
    handles.pop_back();
    if (const auto found = entries_.find(next); found != entries_.end()) {
      removed.push_back(std::move(found->second.object));
      entries_.erase(found);
    }
    for (const auto& [other, entry] : entries_) {
      if (entry.owner == next) {
        handles.push_back(other);
      }
    }
  }
}

}  // namespace zentrel::vistabase::ardelivery
