#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "store/Capability.h"
#include "store/EntryWriter.h"

namespace zentrel::vistabase::ardelivery {

/// Writes a model file. Its content is known, so that what an earlier update wrote is resumed.
using ModelWriter = EntryWriter;

/// An update to one version. Any thread may use it and its writers. It may outlive its store; once
/// it has ended, each of its functions but `close` and `cancel` throws UsageError. What it got
/// stays when it ends, for the next update to the version.
class Update {
 public:
  /// Closes it.
  virtual ~Update() = default;

  /// The files that are still to be written, each once.
  virtual std::vector<ModelFile> missing() = 0;

  /// Begins to write a missing file, or resumes it. Throws std::invalid_argument if the file is not
  /// missing, UsageError if it is being written already, and StoreError if the disk fails.
  virtual std::unique_ptr<ModelWriter> write(const ModelFile& file) = 0;

  /// Makes the version the active one, and ends the update. Throws UsageError if files are missing,
  /// and StoreError if the disk fails or a file was lost in the meantime: the version that was
  /// active still is, and the update goes on.
  virtual void activate() = 0;

  /// Bytes of all files of the version, each counted once.
  virtual std::int64_t totalBytes() = 0;
  /// Bytes that are still to be written: of missing files, without what earlier writers kept.
  virtual std::int64_t remainingBytes() = 0;

  /// Has its writers and `activate` throw CancelledError from now on; what was written stays. Waits
  /// for nobody, and wakes nobody: a download that is blocked goes on until its next `write`.
  virtual void cancel() noexcept = 0;

  /// Ends the update and its writers. Calling it again does nothing.
  virtual void close() = 0;
};

}  // namespace zentrel::vistabase::ardelivery
