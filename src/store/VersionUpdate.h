#pragma once

#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "store/EntryDirectory.h"
#include "store/ModelStore.h"
#include "store/PartWriter.h"
#include "store/StoreRoot.h"
#include "store/VersionCatalog.h"
#include "store/adoptFiles.h"

namespace zentrel::vistabase::ardelivery {

class VersionUpdate;

/// Shared by a ModelStore, its updates and their writers.
struct ModelStoreState {
  ModelStoreState(std::shared_ptr<StoreRoot> opened, const Capability& capability,
                  VersionCatalog::Observer observer)
      : root(std::move(opened)),
        entries(root->directory()),
        catalog(*root, entries, capability, std::move(observer)) {}

  /// The running update, or null. Like all members below, requires the root's lock.
  std::shared_ptr<VersionUpdate> runningUpdate() const { return update.lock(); }

  const std::shared_ptr<StoreRoot> root;
  EntryDirectory entries;
  VersionCatalog catalog;
  std::weak_ptr<VersionUpdate> update;
};

/// An update to one version. Its writers share it.
class VersionUpdate final : public PartOwner, public std::enable_shared_from_this<VersionUpdate> {
 public:
  explicit VersionUpdate(std::shared_ptr<ModelStoreState> store) : store_(std::move(store)) {}

  /// Call once, before anything else. If it throws, the update has ended.
  void begin(int number, const std::vector<ModelFile>& files, Room room);

  std::vector<ModelFile> missing();
  std::unique_ptr<ModelWriter> write(const ModelFile& file);
  void activate();
  std::int64_t totalBytes();
  std::int64_t remainingBytes();
  void cancel() noexcept { isCancelled_ = true; }
  /// Ends the update and closes its writers. Call without the root's lock.
  void end() noexcept;

  void place(const PartPlan& part, std::int64_t bytes) override;
  void requireRunning() const override;

  // These require the root's lock:

  int number() const noexcept { return version_->number; }
  std::set<std::string> names() const { return version_->names(); }
  /// The names of the missing files' parts.
  std::set<std::string> parts() const;
  /// Makes these files count as missing.
  void markMissing(const std::set<std::string>& names);

 private:
  FilesByName missingByName() const;
  std::pair<std::vector<FoundFile>, FilesByName> plan(int number,
                                                      const std::vector<ModelFile>& files,
                                                      Room room);
  void prepare(const std::vector<Adoption>& adoptions, Room room);
  void adopt(const Adoption& adoption);
  void markPresent(const std::string& name);
  void recordIfComplete(const std::string& lastName);

  const std::shared_ptr<ModelStoreState> store_;
  std::shared_ptr<const Version> version_;  // Set before anyone else sees the update.
  std::set<std::string> present_;           // Names of files. Guarded by the root's lock.
  std::atomic<bool> hasEnded_{false};
  std::atomic<bool> isCancelled_{false};
};

}  // namespace zentrel::vistabase::ardelivery
