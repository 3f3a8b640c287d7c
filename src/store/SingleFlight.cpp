#include "store/SingleFlight.h"

#include "store/StoreError.h"

namespace zentrel::vistabase::ardelivery {

std::string SingleFlight::run(const std::string& key, FunctionRef<std::string()> work) {
  const auto flight = std::make_shared<Flight>();
  flight->thread = std::this_thread::get_id();
  std::unique_lock<std::mutex> lock(mutex_);
  const auto [found, isOurs] = flights_.emplace(key, flight);
  if (!isOurs) {
    return wait(lock, std::shared_ptr(found->second));
  }
  lock.unlock();
  try {
    flight->result = work();
  } catch (...) {
    flight->failure = std::current_exception();
  }
  lock.lock();
  flight->isDone = true;
  flights_.erase(key);
  landed_.notify_all();
  if (flight->failure) {
    std::rethrow_exception(flight->failure);
  }
  return flight->result;
}

std::string SingleFlight::wait(std::unique_lock<std::mutex>& lock,
                               const std::shared_ptr<Flight>& flight) {
  const std::thread::id self = std::this_thread::get_id();
  for (std::shared_ptr<Flight> next = flight; next && !next->isDone;) {
    if (next->thread == self) {
      throw UsageError("deadlock: this fetch and another one would wait for each other");
    }
    const auto waits = waiting_.find(next->thread);
    next = waits == waiting_.end() ? nullptr : waits->second;
  }
  waiting_[self] = flight;
  landed_.wait(lock, [&flight] { return flight->isDone; });
  waiting_.erase(self);
  if (flight->failure) {
    std::rethrow_exception(flight->failure);
  }
  return flight->result;
}

}  // namespace zentrel::vistabase::ardelivery
