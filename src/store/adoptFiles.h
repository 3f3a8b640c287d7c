#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "store/Digest.h"
#include "store/IDisk.h"
#include "support/util/FunctionRef.h"

/// Files that lie below a root already, and may have the content of files that are asked for.
namespace zentrel::vistabase::ardelivery {

/// A regular file with one name, somewhere below a root.
struct FoundFile {
  std::vector<std::string> path;  ///< Directories and, last, the file.
  FileStatus status;
};

/// Those of one of these sizes, but for `excluded` names, the cache's own files, and hidden ones
/// that are no parts.
std::vector<FoundFile> findFiles(IDirectory& root, const std::set<std::int64_t>& sizes,
                                 const std::set<std::string>& excluded);

/// The digest of a file that is still the one that was found. Empty if it is not, or cannot be
/// read.
std::string digestOf(IDirectory& root, const FoundFile& file, const NewDigest& newDigest,
                     FunctionRef<void()> checkpoint);

/// Syncs such a file and gives it a name in the root. False if it is not the one that was found.
bool adoptFile(IDirectory& root, const FoundFile& file, const std::string& name);

}  // namespace zentrel::vistabase::ardelivery
