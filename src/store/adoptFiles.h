#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "store/Capability.h"
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

/// Files by their names in the root.
using FilesByName = std::map<std::string, ModelFile>;

/// A file that was found, and the name of the file whose content it has.
struct Adoption {
  FoundFile file;
  std::string name;
};

/// Which of the files that were found have the content of missing ones. Reads them, and calls
/// `checkpoint`, which may throw, from time to time. A file that has changed or cannot be read is
/// left out.
std::vector<Adoption> matchFiles(IDirectory& root, const std::vector<FoundFile>& found,
                                 FilesByName missing, const NewDigest& newDigest,
                                 FunctionRef<void()> checkpoint);

/// Syncs such a file and gives it its name. False if it is not the one that was found any more.
bool adoptFile(IDirectory& root, const Adoption& adoption);

}  // namespace zentrel::vistabase::ardelivery
