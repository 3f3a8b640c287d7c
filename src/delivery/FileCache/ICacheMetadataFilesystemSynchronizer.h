#pragma once

#include <boost/filesystem/path.hpp>
#include <memory>
#include <string>
#include <unordered_set>

#include "delivery/FileCache/ICacheMetadata.h"

namespace zentrel::vistabase::ardelivery {

/// The result of a synchronization.
struct SynchronizationResult {
  std::unique_ptr<ICacheMetadata> metadata;  ///< The records to use from now on; never null.
  bool changed;                              ///< Whether they differ from those passed in.
};

/// Reconciles the records with the actual contents of the root directory.
class ICacheMetadataFilesystemSynchronizer {
 public:
  virtual ~ICacheMetadataFilesystemSynchronizer() = default;

  /// Adds a record for each file or directory without one (measured, unlocked, last accessed at 0
  /// and so evicted first), except `ignoredNames` and names that begin with a dot. Drops the
  /// records of those that no longer exist. Throws if listing or measuring fails; the metadata is
  /// then lost.
  virtual SynchronizationResult synchronize(
      std::unique_ptr<ICacheMetadata> metadata, const boost::filesystem::path& root,
      const std::unordered_set<std::string>& ignoredNames) = 0;
};

}  // namespace zentrel::vistabase::ardelivery
