#pragma once

#include <condition_variable>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "support/util/FunctionRef.h"

namespace zentrel::vistabase::ardelivery {

/// Runs one call per key at a time; concurrent callers wait for it and share its result.
class SingleFlight {
 public:
  /// Calls `work`, or waits for the call in progress for the key. Throws what that call throws, and
  /// UsageError if waiting would deadlock.
  std::string run(const std::string& key, FunctionRef<std::string()> work);

 private:
  struct Flight {
    std::thread::id thread;
    bool isDone = false;
    std::string result;
    std::exception_ptr failure;
  };

  std::string wait(std::unique_lock<std::mutex>& lock, const std::shared_ptr<Flight>& flight);

  std::mutex mutex_;
  std::condition_variable landed_;
  std::map<std::string, std::shared_ptr<Flight>> flights_;
  std::map<std::thread::id, std::shared_ptr<Flight>> waiting_;  // What each thread waits for.
};

}  // namespace zentrel::vistabase::ardelivery
