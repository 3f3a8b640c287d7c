#pragma once

#include "delivery/FileCache/ICacheMetadataFilesystemSynchronizer.h"
#include "delivery/Storage/IFilesystemOperations.h"
#include "support/util/memory/shared_ref.h"

namespace zentrel::vistabase::ardelivery {

/// Lists the root and measures only new entries.
class CacheMetadataFilesystemSynchronizer final : public ICacheMetadataFilesystemSynchronizer {
 public:
  explicit CacheMetadataFilesystemSynchronizer(
      quovix::shared_ref<IFilesystemOperations> filesystem) noexcept;

  SynchronizationResult synchronize(std::unique_ptr<ICacheMetadata> metadata,
                                    const boost::filesystem::path& root,
                                    const std::unordered_set<std::string>& ignoredNames) override;

 private:
  quovix::shared_ref<IFilesystemOperations> filesystem_;
};

}  // namespace zentrel::vistabase::ardelivery
