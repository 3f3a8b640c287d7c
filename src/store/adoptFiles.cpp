#include "store/adoptFiles.h"

#include <algorithm>
#include <memory>

#include "delivery/FileNames.h"
#include "store/PartWriter.h"
#include "store/StoreError.h"
#include "store/fileTrees.h"

namespace zentrel::vistabase::ardelivery {
namespace {

// Raw caches turn slashes in keys into directories; deeper ones are not searched.
constexpr std::size_t kDeepest = 32;

void find(IDirectory& directory, std::vector<std::string> path, const std::set<std::int64_t>& sizes,
          const std::set<std::string>& excluded, std::vector<FoundFile>& found) {
  const bool isRoot = path.empty();
  path.emplace_back();
  for (const std::string& name : directory.list()) {
    const bool isCandidate = isEntryName(name) || beginsWith(name, kPartPrefix);
    if (isRoot && (!isCandidate || excluded.count(name) != 0)) {
      continue;
    }
    path.back() = name;
    const FileStatus status = directory.status(name);
    if (status.isDirectory() && path.size() < kDeepest) {
      find(*directory.openDirectory(name), path, sizes, excluded, found);
    } else if (status.isOwn() && sizes.count(status.size) != 0) {
      found.push_back({path, status});
    }
  }
}

/// Calls `use` with the directory of a path below the root and the path's last name.
template <class Use>
auto inDirectory(IDirectory& root, const std::vector<std::string>& path, const Use& use) {
  std::unique_ptr<IDirectory> directory;
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    directory = (directory ? *directory : root).openDirectory(path[i]);
  }
  return use(directory ? *directory : root, path.back());
}

/// Removes a file, if it is there, and the directories above it that are then empty.
void removeWithParents(IDirectory& root, std::vector<std::string> path) {
  try {
    inDirectory(root, path,
                [](IDirectory& directory, const std::string& name) { directory.remove(name); });
    for (path.pop_back(); !path.empty(); path.pop_back()) {
      inDirectory(root, path, [](IDirectory& directory, const std::string& name) {
        directory.removeDirectory(name);
      });
    }
  } catch (const StoreError&) {
    // A directory that is not empty, or not there.
  }
}

/// Returns the digest of a file, or an empty string if it has changed since it was found or cannot
/// be read.
std::string digestOf(IDirectory& root, const FoundFile& file, const NewDigest& newDigest,
                     FunctionRef<void()> checkpoint) {
  try {
    return inDirectory(root, file.path, [&](IDirectory& directory, const std::string& name) {
      const auto opened = directory.openForReading(name);
      const auto digest = newDigest();
      const bool isFound = opened->status().isUnchangedSince(file.status);
      return isFound && digestFile(*opened, *digest, checkpoint) == file.status.size
                 ? digest->finish()
                 : std::string();
    });
  } catch (const StoreError& error) {
    if (error.isShortage()) {
      throw;
    }
    return "";  // A bad sector, say: the file is fetched instead.
  }
}

}  // namespace

std::vector<FoundFile> findFiles(IDirectory& root, const std::set<std::int64_t>& sizes,
                                 const std::set<std::string>& excluded) {
  std::vector<FoundFile> found;
  if (!sizes.empty()) {
    find(root, {}, sizes, excluded, found);
  }
  return found;
}

std::vector<Adoption> matchFiles(IDirectory& root, const std::vector<FoundFile>& found,
                                 FilesByName missing, const NewDigest& newDigest,
                                 FunctionRef<void()> checkpoint) {
  std::vector<Adoption> adoptions;
  for (const FoundFile& file : found) {
    const std::string digest = digestOf(root, file, newDigest, checkpoint);
    const auto match = std::find_if(missing.begin(), missing.end(), [&](const auto& each) {
      return each.second.sha256() == digest && each.second.sizeBytes() == file.status.size;
    });
    if (match != missing.end()) {
      adoptions.push_back({file, match->first});
      missing.erase(match);
    }
  }
  return adoptions;
}

bool adoptFile(IDirectory& root, const Adoption& adoption) {
  const std::string& name = adoption.name;
  const std::vector<std::string>& path = adoption.file.path;
  const bool isTaken =
      inDirectory(root, path, [&](IDirectory& directory, const std::string& found) {
        if (!directory.status(found).isUnchangedSince(adoption.file.status)) {
          return false;
        }
        directory.openForReading(found)->sync();
        if (&directory != &root || found != name) {
          renameOver(directory, found, root, name);
        }
        return true;
      });
  if (isTaken) {
    std::vector<std::string> extra = path;
    extra.insert(extra.begin(), kExtraName);
    removeWithParents(root, extra);
    if (path.size() > 1) {
      removeWithParents(root, path);
    }
  }
  return isTaken;
}

}  // namespace zentrel::vistabase::ardelivery
