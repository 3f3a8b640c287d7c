#include "store/ActiveWriters.h"

#include "store/PartWriter.h"
#include "store/StoreError.h"

namespace zentrel::vistabase::ardelivery {

void ActiveWriters::add(const std::string& entry, const std::string& part,
                        const std::shared_ptr<PartWriter>& writer) {
  const std::lock_guard<std::mutex> guard(mutex_);
  if (!writers_.emplace(entry, Active{part, writer}).second) {
    throw UsageError("already being written: " + entry);
  }
}

void ActiveWriters::remove(const std::string& entry) noexcept {
  const std::lock_guard<std::mutex> guard(mutex_);
  writers_.erase(entry);
}

std::set<std::string> ActiveWriters::parts() {
  const std::lock_guard<std::mutex> guard(mutex_);
  std::set<std::string> parts;
  for (const auto& [entry, active] : writers_) {
    parts.insert(active.part);
  }
  return parts;
}

void ActiveWriters::closeAll() noexcept {
  for (;;) {
    std::shared_ptr<PartWriter> next;
    {
      const std::lock_guard<std::mutex> guard(mutex_);
      if (writers_.empty()) {
        return;
      }
      next = writers_.begin()->second.writer;
    }
    next->closeNow();  // Removes it from the map.
  }
}

}  // namespace zentrel::vistabase::ardelivery
