#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "store/IDisk.h"

/// Operations on whole files and directory trees.
namespace zentrel::vistabase::ardelivery {

/// Adds two sizes, neither of them negative, saturating at the largest number.
constexpr std::int64_t addSizes(std::int64_t left, std::int64_t right) noexcept {
  return left > INT64_MAX - right ? INT64_MAX : left + right;
}

/// The size of a regular file, or of all regular files below a directory, in bytes; 0 for anything
/// else.
std::int64_t sizeOf(IDirectory& directory, const std::string& name, const FileStatus& status);

/// Removes a file, a link (not its target), or a directory and everything in it. Returns false if
/// the name does not exist.
bool removeTree(IDirectory& directory, const std::string& name);

/// Like IDirectory::create, but replaces whatever has the name.
std::unique_ptr<IFile> createFresh(IDirectory& directory, const std::string& name);

/// Like IDirectory::rename, but replaces even a directory.
void renameOver(IDirectory& directory, const std::string& from, IDirectory& toDirectory,
                const std::string& to);

/// The size limit of a store's own file, and of an entry's extra bytes.
constexpr std::int64_t kLargestOwnFile = std::int64_t{16} << 20;

/// Reads a small file; nullopt if the name does not exist. Throws StoreError (Damaged) if it is not
/// a regular file or too large.
std::optional<std::string> readSmallFile(IDirectory& directory, const std::string& name);

/// Whether a file must survive a power cut once written.
enum class Durability { Synced, Unsynced };

/// Replaces the file `name` in `directory` atomically, by way of the file `temporary` in `root`.
void replaceFile(IDirectory& root, const std::string& temporary, IDirectory& directory,
                 const std::string& name, std::string_view bytes, Durability durability);

/// The same for a file of the root.
void replaceFile(IDirectory& root, const std::string& name, std::string_view bytes,
                 Durability durability);

}  // namespace zentrel::vistabase::ardelivery
