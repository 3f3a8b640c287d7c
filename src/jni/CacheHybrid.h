#pragma once

#include <atomic>
#include <memory>
#include <thread>
#include <utility>

#include "platform/zentreljni/Exceptions.h"
#include "platform/zentreljni/HybridData.h"

namespace zentrel::vistabase::ardelivery {

/// Detects concurrent use of a file cache and the model caches over it, whose peers share this. A
/// second thread is a bug in the caller, so it gets an exception instead of waiting.
class SingleThreadGuard {
 public:
  /// Admits the current thread until destroyed. The thread inside may enter again, from a
  /// soft-error listener; any other gets java.lang.IllegalStateException.
  class Scope {
   public:
    explicit Scope(SingleThreadGuard& guard) : guard_(guard) { guard_.enter(); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    ~Scope() { guard_.leave(); }

   private:
    SingleThreadGuard& guard_;
  };

 private:
  void enter() {
    const std::thread::id self = std::this_thread::get_id();
    std::thread::id inside;
    if (!thread_.compare_exchange_strong(inside, self, std::memory_order_acquire) &&
        inside != self) {
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
  int depth_ = 0;  // Nested calls of that thread, which alone accesses it.
};

/// The native peer of a managed file cache or model cache.
class CacheHybrid : public jni::HybridBase {
 public:
  /// Shared by a file cache and the model caches over it.
  const std::shared_ptr<SingleThreadGuard>& threadGuard() const noexcept { return threadGuard_; }

 protected:
  explicit CacheHybrid(std::shared_ptr<SingleThreadGuard> threadGuard) noexcept
      : threadGuard_(std::move(threadGuard)) {}

 private:
  const std::shared_ptr<SingleThreadGuard> threadGuard_;
};

/// Returns what a native method holds during a call on such a peer.
inline SingleThreadGuard::Scope enter(const CacheHybrid& peer) {
  return SingleThreadGuard::Scope(*peer.threadGuard());
}

}  // namespace zentrel::vistabase::ardelivery
