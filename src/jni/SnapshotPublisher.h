#pragma once

#include <jni.h>

#include "store/ModelStore.h"

namespace zentrel::vistabase::ardelivery {

/// Passes snapshots to a managed ModelStore, in order. Holds the store by a weak reference, and
/// does nothing once it is collected.
class SnapshotPublisher {
 public:
  explicit SnapshotPublisher(jobject store);
  SnapshotPublisher(const SnapshotPublisher&) = delete;
  SnapshotPublisher& operator=(const SnapshotPublisher&) = delete;
  ~SnapshotPublisher();

  /// Fails, with a report, only if the JVM itself does.
  void publish(const Snapshot& snapshot) const noexcept;

 private:
  void tryPublish(const Snapshot& snapshot) const;

  const jweak store_;
};

}  // namespace zentrel::vistabase::ardelivery
