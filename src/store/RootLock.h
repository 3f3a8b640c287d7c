#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "store/IDisk.h"

namespace zentrel::vistabase::ardelivery {

/// Makes a root belong to one store of this process.
class RootClaim {
 public:
  /// Throws StoreError as InUse, with the thread that opened the other store.
  RootClaim(const FileStatus& root, const std::string& path);
  RootClaim(const RootClaim&) = delete;
  RootClaim& operator=(const RootClaim&) = delete;
  ~RootClaim();

 private:
  const std::pair<std::uint64_t, std::uint64_t> identity_;
};

/// Makes a root belong to one store, in this process and among all others. The lock is on the
/// directory itself: there is no file to delete or to plant, and the system drops it with the
/// process. The file ".lock" only names the process, for the messages of others.
class RootLock {
 public:
  /// Throws StoreError as InUse, with who has the root.
  RootLock(std::shared_ptr<IDirectory> root, const std::string& path);
  RootLock(const RootLock&) = delete;
  RootLock& operator=(const RootLock&) = delete;
  ~RootLock();

 private:
  const std::shared_ptr<IDirectory> root_;
  const RootClaim claim_;  // Given up after the lock.
};

/// Who has a root that is locked: "the process 1234 (program)", as far as it can be told.
std::string describeHolder(IDirectory& root);

}  // namespace zentrel::vistabase::ardelivery
