#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "store/IDisk.h"

/// What the stores do with whole files and directories.
namespace zentrel::vistabase::ardelivery {

/// The sum, or the largest number if that is less. Neither may be negative.
constexpr std::int64_t addSizes(std::int64_t left, std::int64_t right) noexcept {
  return left > INT64_MAX - right ? INT64_MAX : left + right;
}

/// Bytes of a regular file, or of all regular files below a directory; 0 for anything else.
std::int64_t sizeOf(IDirectory& directory, const std::string& name, const FileStatus& status);

/// Removes a file, or a directory with all that is in it; of a link, the link. False if nothing has
/// the name.
bool removeTree(IDirectory& directory, const std::string& name);

/// As IDirectory::create, in place of whatever has the name.
std::unique_ptr<IFile> createFresh(IDirectory& directory, const std::string& name);

/// As IDirectory::rename, in place of whatever has the new name, a directory too.
void renameOver(IDirectory& directory, const std::string& from, IDirectory& toDirectory,
                const std::string& to);

/// The most bytes that a file of the store's own, or an entry's extra bytes, may have.
constexpr std::int64_t kLargestOwnFile = std::int64_t{16} << 20;

/// The bytes of a small file; none if nothing has the name. Throws StoreError, as Damaged for what
/// is no regular file or too large.
std::optional<std::string> readSmallFile(IDirectory& directory, const std::string& name);

/// Whether files written are to outlast a power cut.
enum class Durability { Lasting, Unsynced };

/// Has `bytes` take the place of the file `name` of `directory` at once, by way of a file of the
/// name `temporary` in `root`.
void replaceFile(IDirectory& root, const std::string& temporary, IDirectory& directory,
                 const std::string& name, std::string_view bytes, Durability durability);

/// The same for a file of the root.
void replaceFile(IDirectory& root, const std::string& name, std::string_view bytes,
                 Durability durability);

}  // namespace zentrel::vistabase::ardelivery
