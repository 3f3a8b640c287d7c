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

/// Has one thread at a time do what several ask for under the same key; the others wait for it.
class SingleFlight {
 public:
  /// Calls `work`, or waits for the thread that is inside a call for the key. Throws what it
  /// throws, and UsageError if that thread waits for this one.
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
  std::map<std::thread::id, std::shared_ptr<Flight>> waiting_;  // What threads wait for.
};

}  // namespace zentrel::vistabase::ardelivery
