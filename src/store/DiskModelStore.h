#pragma once

#include <memory>
#include <string>
#include <vector>

#include "store/ModelStore.h"
#include "store/StoreRoot.h"
#include "store/VersionUpdate.h"

namespace zentrel::vistabase::ardelivery {

/// A ModelStore over a StoreRoot, which its updates and writers share.
class DiskModelStore final : public ModelStore {
 public:
  static std::unique_ptr<ModelStore> open(
      const std::string& root, const Capability& capability, std::int64_t maxSizeBytes,
      const StoreEnvironment& environment, VersionCatalog::Observer observer = [](auto&) {});

  explicit DiskModelStore(std::shared_ptr<ModelStoreState> state) : state_(std::move(state)) {}
  DiskModelStore(const DiskModelStore&) = delete;
  DiskModelStore& operator=(const DiskModelStore&) = delete;
  ~DiskModelStore() override;

  std::shared_ptr<const Snapshot> snapshot() override;
  std::unique_ptr<Update> begin(int version, const std::vector<ModelFile>& files,
                                Room room) override;
  void activate(int version) override;
  void deactivate() override;
  void trimExcept(const std::vector<int>& versions) override;
  std::vector<ModelFile> verify() override;
  std::vector<StoredModelFile> files(int version) override;
  std::int64_t sizeBytes() override;
  void setMaxSizeBytes(std::int64_t bytes) override;
  void close() override;

 private:
  std::shared_ptr<const Version> find(int version) const;
  void dropStrays();

  const std::shared_ptr<ModelStoreState> state_;
};

}  // namespace zentrel::vistabase::ardelivery
