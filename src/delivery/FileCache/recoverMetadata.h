#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

class IFileIO;
class IFilesystemOperations;

/// What `recoverMetadata` did.
enum class MetadataRecovery {
  NothingToMend,  ///< The metadata file can be read, or there is none.
  SetAside,       ///< It could not be read, and has another name now.
};

/// Mends a root whose metadata file cannot be read as such, for which every operation of its cache
/// fails: renames it to kDamagedMetadataName, in place of an earlier one. The next operation adopts
/// every entry again, as not used recently; entries and their extra bytes stay.
///
/// Throws std::exception, with the file in its place, when it cannot be looked into (which is no
/// proof of damage) or renamed. A cache may replace the file by a rename meanwhile, but not write
/// it in place, as FileCacheImpl does: half of the text looks damaged.
MetadataRecovery recoverMetadata(const std::string& root);

/// The same on the given storage.
MetadataRecovery recoverMetadata(const std::string& root, IFileIO& fileIO,
                                 IFilesystemOperations& filesystem);

}  // namespace zentrel::vistabase::ardelivery
