#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "store/Capability.h"
#include "store/StoreError.h"
#include "store/Update.h"

namespace zentrel::vistabase::ardelivery {

/// What a ModelStore holds at one moment.
struct Snapshot {
  std::map<std::string, std::string> paths;  ///< The active version's files, by type.
  std::optional<int> active;                 ///< The number of the active version.
  std::vector<int> versions;                 ///< All complete versions, ascending.
};

/// A file of a complete version.
struct StoredModelFile {
  ModelFile file;    ///< Its type, size and digest.
  std::string path;  ///< Its full path.
};

/// What may be deleted to make room for an update, besides inactive versions and files of no
/// version.
enum class Room {
  KeepActive,    ///< Nothing more.
  GiveUpActive,  ///< As a last resort, the active version's files that are not shared.
};

/// The versions of one capability's models, under one root directory, within a byte budget.
/// Thread-safe. A kill, a power cut, a full disk or damage to the store's own files does not cost
/// the active version, as long as its model files are intact. A root has one store at a time,
/// across all processes.
///
/// Failures are StoreError. Calls throw UsageError once the store is closed, and when a soft-error
/// sink makes them from inside another call of the store; only `snapshot` may be called there.
class ModelStore {
 public:
  /// Opens the store in the directory `root`, creating it and its parents if missing. Damage is
  /// repaired and reported as a soft error. The budget is for all model files together, in bytes.
  /// Throws StoreError (InUse) if another store has the root, and std::invalid_argument if the
  /// budget is negative or the root holds anything but models of this capability.
  static std::unique_ptr<ModelStore> open(const std::string& root, const Capability& capability,
                                          std::int64_t maxSizeBytes);

  /// Closes the store.
  virtual ~ModelStore() = default;

  /// Returns what the store holds. Makes no system call.
  virtual std::shared_ptr<const Snapshot> snapshot() = 0;

  /// Starts an update to a version, with one file for each of the capability's types. Files already
  /// in the root, including those that raw caches put there, are reused. Makes room for the missing
  /// ones by deleting the least recently active versions, then files of no version. Deletes what
  /// earlier updates to other versions left unfinished.
  ///
  /// Throws StoreError (NoRoom) if the version and the active one together exceed the budget,
  /// StoreError (DiskFull) if the file system has no room for the missing files,
  /// std::invalid_argument if a type is missing, repeated or unknown, and UsageError if another
  /// update is running.
  virtual std::unique_ptr<Update> begin(int version, const std::vector<ModelFile>& files,
                                        Room room = Room::KeepActive) = 0;

  /// Makes a complete version the active one. Throws std::invalid_argument if there is no such
  /// version, and StoreError (Damaged) if it has lost or damaged files.
  virtual void activate(int version) = 0;
  /// Leaves no version active. Deletes nothing.
  virtual void deactivate() = 0;

  /// Deletes all versions except these and the active one, whatever unfinished updates left behind,
  /// and committed files of no version. If no version would be left, keeps them all.
  virtual void trimExcept(const std::vector<int>& versions) = 0;

  /// Reads all files of the complete versions and returns, once each, those whose bytes no longer
  /// match what was committed. The next update to such a version lists them as missing.
  virtual std::vector<ModelFile> verify() = 0;

  /// Returns the files of a complete version, in the order of the types. Throws
  /// std::invalid_argument if there is no such version.
  virtual std::vector<StoredModelFile> files(int version) = 0;

  /// Returns the bytes on disk now that count toward the budget.
  virtual std::int64_t sizeBytes() = 0;
  /// Changes the budget; the next update enforces it.
  virtual void setMaxSizeBytes(std::int64_t bytes) = 0;

  /// Ends the update, closes its writers, and releases the root. Idempotent.
  virtual void close() = 0;
};

}  // namespace zentrel::vistabase::ardelivery
