#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
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

/// What a store gets from outside.
struct StoreEnvironment {
  OpenRoot openRoot;
  NewDigest newDigest;
};

/// An open root, which a store shares with all that it hands out. Any thread.
class StoreRoot {
 public:
  /// Throws std::invalid_argument for an empty path, one with a zero byte, or a negative budget,
  /// and StoreError as InUse.
  StoreRoot(const std::string& path, std::int64_t maxSizeBytes,
            const StoreEnvironment& environment);

  const std::string& path() const noexcept { return path_; }
  std::string pathOf(const std::string& name) const { return path_ + '/' + name; }
  IDirectory& directory() const noexcept { return *directory_; }
  std::unique_ptr<Digest> newDigest() const { return newDigest_(); }
  ActiveWriters& writers() noexcept { return writers_; }

  std::int64_t maxSizeBytes() const noexcept { return maxSizeBytes_; }
  void setMaxSizeBytes(std::int64_t bytes);

  /// Calls `read`, which reads a file of the store's own. False if the file is damaged, which is
  /// reported. Throws std::invalid_argument for a file of a newer release.
  bool readOwn(const char* name, FunctionRef<void()> read);

  /// Says what the root is to hold. Throws std::invalid_argument if it holds something else.
  void claim(const RootContent& content);

  /// Held while what the root has is looked at or changed, but never while bytes are on their way.
  /// Throws UsageError once the root is closed.
  std::unique_lock<std::mutex> lock();
  /// The same for what has to be done after that too.
  std::unique_lock<std::mutex> lockEvenClosed() { return std::unique_lock(changing_); }
  /// The same, for what changes something: the root says what it holds before that.
  std::unique_lock<std::mutex> lockForChange();
  /// Under the lock, before anything is changed.
  void requireMarked();

  /// Throws UsageError once the root is closed.
  void requireOpen() const;

  /// Tells of something that was survived: as a soft error, at the end of this thread's
  /// StoreCall.
  void report(const std::string& message, const char* function = __builtin_FUNCTION()) noexcept;

  /// Ends all writing, waits for what is inside, and lets go of the root. Whoever calls it
  /// meanwhile returns when that is done.
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
  std::mutex changing_;
  std::atomic<bool> closed_{false};
  std::mutex closing_;
  std::mutex callsMutex_;
  std::vector<std::pair<std::thread::id, StoreCall*>> calls_;
};

/// A thread inside a store or something that it handed out, from the beginning of a public call to
/// its end. What the call reports is told when the locks are free again, so that a soft-error sink
/// can wait for nobody; it cannot call the store, either.
class StoreCall {
 public:
  /// Throws UsageError for a call in the middle of another one.
  explicit StoreCall(StoreRoot& root);
  StoreCall(const StoreCall&) = delete;
  StoreCall& operator=(const StoreCall&) = delete;
  ~StoreCall();

 private:
  friend class StoreRoot;

  StoreRoot& root_;
  std::vector<std::pair<std::string, const char*>> reports_;  // And from which function.
};

}  // namespace zentrel::vistabase::ardelivery
