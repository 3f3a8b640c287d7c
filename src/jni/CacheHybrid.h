#pragma once

#include <atomic>
#include <memory>
#include <thread>
#include <utility>

#include "platform/zentreljni/Exceptions.h"
#include "platform/zentreljni/HybridData.h"

namespace zentrel::vistabase::ardelivery {

/// Which thread is inside a file cache and the model caches over it, whose peers share this. A
/// second one is a mistake of the caller: it is told so, rather than made to wait.
class OneThread {
 public:
  /// Makes the current thread the one, until it ends. A thread that is inside may come in again,
  /// from a listener for soft errors. Throws java.lang.IllegalStateException for any other.
  class Inside {
   public:
    explicit Inside(OneThread& claim) : claim_(claim) { claim_.enter(); }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
    ~Inside() { claim_.leave(); }

   private:
    OneThread& claim_;
  };

 private:
  void enter() {
    const std::thread::id self = std::this_thread::get_id();
    std::thread::id found;
    if (!thread_.compare_exchange_strong(found, self, std::memory_order_acquire) && found != self) {
      jni::throwNewJavaException(
          "java/lang/IllegalStateException",
          "the cache is in use by another thread: one thread at a time may be inside a file cache "
          "and the model caches over it");
    }
    ++depth_;
  }
  void leave() noexcept {
    if (--depth_ == 0) {
      thread_.store(std::thread::id(), std::memory_order_release);
    }
  }

  std::atomic<std::thread::id> thread_{std::thread::id()};
  int depth_ = 0;  // Of the calls of that thread, which alone uses it.
};

/// The native peer of a managed file cache or model cache.
class CacheHybrid : public jni::HybridBase {
 public:
  /// Shared by a file cache and the model caches over it.
  const std::shared_ptr<OneThread>& oneThread() const noexcept { return oneThread_; }

 protected:
  explicit CacheHybrid(std::shared_ptr<OneThread> oneThread) noexcept
      : oneThread_(std::move(oneThread)) {}

 private:
  const std::shared_ptr<OneThread> oneThread_;
};

/// What a native holds while it is inside such a peer.
inline OneThread::Inside enter(const CacheHybrid& peer) {
  return OneThread::Inside(*peer.oneThread());
}

}  // namespace zentrel::vistabase::ardelivery
