#pragma once

#include <boost/filesystem/path.hpp>
#include <memory>
#include <string>
#include <unordered_set>

#include "delivery/FileCache/ICacheMetadata.h"

namespace zentrel::vistabase::ardelivery {

/// The outcome of a synchronization.
struct SynchronizationResult {
  std::unique_ptr<ICacheMetadata> metadata;  ///< What to use from now on; never null.
  bool changed;                              ///< Whether it differs from what was passed in.
};

/// Reconciles the records with what really lies in the root directory.
class ICacheMetadataFilesystemSynchronizer {
 public:
  virtual ~ICacheMetadataFilesystemSynchronizer() = default;

  /// Adds a record for each file or directory that has none (measured, unlocked, last accessed at
  /// 0 and so the first to be evicted), except for `ignoredNames` and names that begin with a dot;
  /// drops the records of those that are gone. Failures to list or measure are thrown, and the
  /// metadata is lost with them.
  virtual SynchronizationResult synchronize(
      std::unique_ptr<ICacheMetadata> metadata, const boost::filesystem::path& root,
      const std::unordered_set<std::string>& ignoredNames) = 0;
};

}  // namespace zentrel::vistabase::ardelivery
