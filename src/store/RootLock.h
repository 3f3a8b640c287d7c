#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "store/IDisk.h"

namespace zentrel::vistabase::ardelivery {

/// Reserves a root for one store in this process.
class RootClaim {
 public:
  /// Throws StoreError (InUse), naming the thread that opened the other store.
  RootClaim(const FileStatus& root, const std::string& path);
  RootClaim(const RootClaim&) = delete;
  RootClaim& operator=(const RootClaim&) = delete;
  ~RootClaim();

 private:
  const std::pair<std::uint64_t, std::uint64_t> identity_;
};

/// Reserves a root for one store, across all processes. The lock is on the directory itself: there
/// is no lock file to delete or plant, and the system releases it when the process dies. The file
/// ".lock" only identifies the process, for the error messages of others.
class RootLock {
 public:
  /// Throws StoreError (InUse), naming the holder.
  RootLock(std::shared_ptr<IDirectory> root, const std::string& path);
  RootLock(const RootLock&) = delete;
  RootLock& operator=(const RootLock&) = delete;
  ~RootLock();

  /// Whether this is the process that took the lock, and not one that was forked from it.
  bool isHere() const noexcept;
  /// Writes ".lock". Best effort, since only the lock matters.
  void recordHolder();

 private:
  const std::shared_ptr<IDirectory> root_;
  const RootClaim claim_;  // Released after the lock.
  const std::int64_t process_;
};

/// Names the holder of a locked root: "the process 1234 (program)", or less if that is unknown.
std::string describeHolder(IDirectory& root);

/// The same; none if the root is free. Takes the lock for an instant, and writes nothing.
std::optional<std::string> findHolder(IDirectory& root);

}  // namespace zentrel::vistabase::ardelivery
