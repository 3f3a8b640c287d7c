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

/// Reuse of files already below a root that have the content of files to be fetched.
namespace zentrel::vistabase::ardelivery {

/// A regular file with one name, somewhere below a root.
struct FoundFile {
  std::vector<std::string> path;  ///< Directories and, last, the file.
  FileStatus status;
};

/// Finds files with one of these sizes, except those under `excluded` names, the cache's own files,
/// and hidden files other than parts.
std::vector<FoundFile> findFiles(IDirectory& root, const std::set<std::int64_t>& sizes,
                                 const std::set<std::string>& excluded);

/// Files by name in the root.
using FilesByName = std::map<std::string, ModelFile>;

/// A file that was found, and the name that its content should have.
struct Adoption {
  FoundFile file;
  std::string name;
};

/// Selects the files that have the content of missing ones, by reading them. Calls `checkpoint`,
/// which may throw, once per buffer. Skips files that have changed or cannot be read.
std::vector<Adoption> matchFiles(IDirectory& root, const std::vector<FoundFile>& found,
                                 FilesByName missing, const NewDigest& newDigest,
                                 FunctionRef<void()> checkpoint);

/// Syncs such a file and renames it. Returns false if it has changed since it was found.
bool adoptFile(IDirectory& root, const Adoption& adoption);

}  // namespace zentrel::vistabase::ardelivery
