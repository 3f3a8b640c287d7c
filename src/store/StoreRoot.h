#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "store/ActiveWriters.h"
#include "store/Digest.h"
#include "store/IDisk.h"
#include "store/RootLock.h"
#include "store/RootMarker.h"
#include "support/util/FunctionRef.h"

namespace zentrel::vistabase::ardelivery {

class StoreCall;

/// The platform services that a store uses.
struct StoreEnvironment {
  OpenRoot openRoot;
  NewDigest newDigest;
};

/// An open root, shared by a store and everything that it hands out. Thread-safe.
class StoreRoot {
 public:
  /// Throws std::invalid_argument for a negative budget or a path that is empty or contains a zero
  /// byte, and StoreError (InUse) if another store has the root.
  StoreRoot(const std::string& path, std::int64_t maxSizeBytes,
            const StoreEnvironment& environment);

  const std::string& path() const noexcept { return path_; }
  std::string pathOf(const std::string& name) const { return path_ + '/' + name; }
  IDirectory& directory() const noexcept { return *directory_; }
  std::unique_ptr<Digest> newDigest() const { return newDigest_(); }
  ActiveWriters& writers() noexcept { return writers_; }

  std::int64_t maxSizeBytes() const noexcept { return maxSizeBytes_; }
  void setMaxSizeBytes(std::int64_t bytes);

  /// Calls `read`, which reads one of the store's own files. If the file is damaged, reports it and
  /// returns false. Throws std::invalid_argument for a file of a newer release.
  bool readOwnFile(const char* name, FunctionRef<void()> read);

  /// Returns what the root holds, if it can be told: none where no store has been. Throws
  /// std::invalid_argument for a file of a newer release.
  std::optional<RootContent> findContent();
  /// Declares what the root will hold. Throws std::invalid_argument if it holds something else.
  void claim(const RootContent& content);

  /// Guards the root's contents; not held during bulk I/O. Throws UsageError once the root is
  /// closed.
  std::unique_lock<std::mutex> lock();
  /// The same, for cleaning up after the root is closed.
  std::unique_lock<std::mutex> lockEvenIfClosed() { return std::unique_lock(contentsMutex_); }
  /// The same, for a change: writes the marker first if it is missing.
  std::unique_lock<std::mutex> lockForChange();
  /// Writes the marker if it is missing. Call with the lock held, before any change.
  void ensureMarked();

  /// Throws UsageError once the root is closed.
  void requireOpen() const;
  /// Whether this process was forked from the one that opened the root, which still has it.
  bool isForked() const noexcept { return lock_ && !lock_->isHere(); }

  /// Reports a failure that was recovered from, as a soft error, at the end of this thread's
  /// StoreCall.
  void report(const std::string& message, const char* function = __builtin_FUNCTION()) noexcept;

  /// Closes all writers, waits for calls in progress, and releases the root. A concurrent call
  /// returns once that is done.
  void close() noexcept;

 private:
  friend class StoreCall;

  const std::string path_;
  const std::shared_ptr<IDirectory> directory_;
  const NewDigest newDigest_;
  std::atomic<std::int64_t> maxSizeBytes_;
  std::optional<RootLock> lock_;
  RootContent content_;
  bool isMarked_ = false;
  ActiveWriters writers_;
  std::mutex contentsMutex_;
  std::atomic<bool> closed_{false};
  std::mutex closeMutex_;
  std::mutex callsMutex_;
  std::vector<std::pair<std::thread::id, StoreCall*>> calls_;
};

/// The scope of one public call on a store or on something that it handed out. Delivers the call's
/// reports at its end, when no lock is held, so that a soft-error sink cannot deadlock. The sink
/// cannot call the store, either.
class StoreCall {
 public:
  /// Throws UsageError if this thread is already inside a call.
  explicit StoreCall(StoreRoot& root);
  /// For destructors, which may run in the middle of another call.
  StoreCall(StoreRoot& root, std::nothrow_t destructor) noexcept;
  StoreCall(const StoreCall&) = delete;
  StoreCall& operator=(const StoreCall&) = delete;
  ~StoreCall();

 private:
  friend class StoreRoot;

  StoreRoot& root_;
  std::vector<std::pair<std::string, const char*>> reports_;  // Message and function.
};

}  // namespace zentrel::vistabase::ardelivery
