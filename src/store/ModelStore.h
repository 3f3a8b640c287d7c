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
  std::map<std::string, std::string> paths;  ///< Of the active version's files, by type.
  std::optional<int> active;                 ///< The number of the active version.
  std::vector<int> versions;                 ///< All complete versions, ascending.
};

/// A file of a complete version.
struct StoredModelFile {
  ModelFile file;    ///< What it has to be.
  std::string path;  ///< Where it is.
};

/// What room may be made of for an update, beyond inactive versions and files of no version.
enum class Room {
  KeepActive,    ///< Nothing else.
  GiveUpActive,  ///< If there is no other way, the active version's files that are not shared.
};

/// The versions of one capability's models, under one root directory, within a byte budget. Any
/// thread may call anything at any time; after a kill, a power cut, a full disk or damage to the
/// store's own files the active version is there, as long as its model files are whole; and a root
/// has one store, in this process and in all others.
///
/// Failures are StoreError. A closed store throws UsageError, and so does one that a soft-error
/// sink calls in the middle of a call of its own; `snapshot` may be called even there.
class ModelStore {
 public:
  /// Opens the store of a directory, which is created with its parents if it is missing. What is
  /// damaged is mended, with a soft error. The budget is in bytes, of all model files together.
  /// Throws StoreError as InUse, and std::invalid_argument if the budget is negative, or the root
  /// holds anything else than models of this capability.
  static std::unique_ptr<ModelStore> open(const std::string& root, const Capability& capability,
                                          std::int64_t maxSizeBytes);

  /// Closes it.
  virtual ~ModelStore() = default;

  /// What the store holds. Makes no system call.
  virtual std::shared_ptr<const Snapshot> snapshot() = 0;

  /// Begins an update to a version, with one file for each of the capability's types. Files that
  /// lie in the root already, also those that raw caches have put there, are taken instead of being
  /// missing. Room is made for the others: the versions that have not been active for longest go,
  /// then files of no version. What earlier updates to other versions left unfinished goes too.
  ///
  /// Throws StoreError as NoRoom if the version and the active one do not fit the budget together,
  /// as DiskFull if the file system has no room for what is missing; std::invalid_argument if a
  /// type is missing, repeated or unknown; UsageError if another update is running.
  virtual std::unique_ptr<Update> begin(int version, const std::vector<ModelFile>& files,
                                        Room room = Room::KeepActive) = 0;

  /// Makes a complete version the active one. Throws std::invalid_argument if there is no such
  /// version, and StoreError as Damaged if it has lost or damaged files.
  virtual void activate(int version) = 0;
  /// Leaves no version active; all of them stay.
  virtual void deactivate() = 0;

  /// Deletes all versions but these and the active one, what unfinished updates have left, and
  /// committed files of no version. If that would leave no version at all, all of them stay.
  virtual void trimExcept(const std::vector<int>& versions) = 0;

  /// Reads all files of the complete versions and returns those whose bytes are not what was
  /// committed any more, each once. The next update to such a version lists them as missing.
  virtual std::vector<ModelFile> verify() = 0;

  /// The files of a complete version, in the order of the types. Throws std::invalid_argument if
  /// there is no such version.
  virtual std::vector<StoredModelFile> files(int version) = 0;

  /// The bytes that count for the budget, as they lie on the disk now.
  virtual std::int64_t sizeBytes() = 0;
  /// Changes the budget, which the next update keeps.
  virtual void setMaxSizeBytes(std::int64_t bytes) = 0;

  /// Ends the update and its writers, and lets go of the root. Calling it again does nothing.
  virtual void close() = 0;
};

}  // namespace zentrel::vistabase::ardelivery
