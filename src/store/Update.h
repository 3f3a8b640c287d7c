#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "store/Capability.h"
#include "store/EntryWriter.h"

namespace zentrel::vistabase::ardelivery {

/// Writes a model file. Its content is known, so bytes written by an earlier update are resumed.
using ModelWriter = EntryWriter;

/// An update to one version. Thread-safe, as are its writers. May outlive its store; once it has
/// ended, every function except `close` and `cancel` throws UsageError. The bytes received stay for
/// the next update to the version.
class Update {
 public:
  /// Closes the update.
  virtual ~Update() = default;

  /// Returns the files still to be written, each once.
  virtual std::vector<ModelFile> missing() = 0;

  /// Starts or resumes writing a missing file. Throws std::invalid_argument if the file is not
  /// missing, UsageError if it is already being written, and StoreError if the disk fails.
  virtual std::unique_ptr<ModelWriter> write(const ModelFile& file) = 0;

  /// Makes the version the active one and ends the update. Throws UsageError if files are missing,
  /// and StoreError if the disk fails or a file was lost in the meantime: then the active version
  /// does not change, and the update continues.
  virtual void activate() = 0;

  /// Returns the bytes of all files of the version, each file counted once.
  virtual std::int64_t totalBytes() = 0;
  /// Returns the bytes still to be written: those of missing files, less what earlier writers kept.
  virtual std::int64_t remainingBytes() = 0;

  /// Makes its writers and `activate` throw CancelledError from now on; what was written is kept.
  /// Does not block, and wakes no one: a blocked download continues until its next `write`.
  virtual void cancel() noexcept = 0;

  /// Ends the update and closes its writers. Idempotent.
  virtual void close() = 0;
};

}  // namespace zentrel::vistabase::ardelivery
