#pragma once

#include <jni.h>

#include "store/ModelStore.h"

namespace zentrel::vistabase::ardelivery {

/// Passes snapshots to a managed ModelStore, in the order in which they hold. The store is held
/// weakly: one that was dropped is passed nothing.
class SnapshotPublisher {
 public:
  explicit SnapshotPublisher(jobject store);
  SnapshotPublisher(const SnapshotPublisher&) = delete;
  SnapshotPublisher& operator=(const SnapshotPublisher&) = delete;
  ~SnapshotPublisher();

  /// Fails only if the virtual machine itself does, which is reported.
  void publish(const Snapshot& snapshot) const noexcept;

 private:
  void tryPublish(const Snapshot& snapshot) const;

  const jweak store_;
};

}  // namespace zentrel::vistabase::ardelivery
