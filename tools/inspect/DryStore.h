#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/softerror/softerror.h"
#include "store/DiskModelStore.h"

namespace zentrel::vistabase::ardelivery::inspect {

/// A root's store, run by the library's own code without changing the disk. Throws std::exception
/// for a root that cannot be read or that a newer release wrote. Receives soft errors as it lives.
class DryStore {
 public:
  explicit DryStore(const std::string& path);
  DryStore(const DryStore&) = delete;
  DryStore& operator=(const DryStore&) = delete;

  bool isStore = false;  ///< Whether a store has used the root.
  /// What the root holds; none if that is not enough to open a store.
  std::optional<RootContent> content;
  RootContent opened;  ///< The same, with the predefined capability where only types are known.
  /// The table of versions on disk, if it is readable.
  std::optional<VersionTable> table;

  /// Opens the store. Returns what that "would write …", "would delete …" or "would report: …".
  std::vector<std::string> open();
  // Null for a FileStore:
  std::shared_ptr<ModelStoreState> models;
  std::unique_ptr<ModelStore> store;
  /// Returns the names to delete so that `bytes` more fit the budget. Throws StoreError.
  std::vector<std::string> makeRoom(std::int64_t bytes, std::int64_t budget);
  /// The bytes that count towards the budget.
  std::int64_t totalBytes() { return (models ? models->entries : files_).total(); }

 private:
  static void receive(const softerror::Report& report, void* self);

  std::vector<std::string> told_, deleted_;
  const std::shared_ptr<void> sink_;  // Puts the earlier sink back.
  const std::shared_ptr<StoreRoot> root_;
  EntryDirectory files_;
};

}  // namespace zentrel::vistabase::ardelivery::inspect
