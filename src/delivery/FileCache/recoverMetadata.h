#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

class IFileIO;
class IFilesystemOperations;

/// What `recoverMetadata` did.
enum class MetadataRecovery {
  NothingToMend,  ///< The metadata file is readable, or there is none.
  SetAside,       ///< It was unreadable and has been renamed.
};

/// Repairs a root whose metadata file is malformed, which makes every operation of its cache fail:
/// renames the file to ".metadata.json.damaged", replacing an earlier one. The next operation
/// adopts every entry again, as not recently used; entries and their extra bytes are kept.
///
/// Throws std::exception, leaving the file in place, if it cannot be inspected (which does not
/// prove damage) or renamed. Meanwhile a cache may replace the file by renaming, but must not write
/// it in place, as FileCacheImpl does: a half-written file looks damaged.
MetadataRecovery recoverMetadata(const std::string& root);

/// The same, on the given storage.
MetadataRecovery recoverMetadata(const std::string& root, IFileIO& fileIO,
                                 IFilesystemOperations& filesystem);

}  // namespace zentrel::vistabase::ardelivery
