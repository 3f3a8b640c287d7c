#include "store/fileTrees.h"

#include <cerrno>
#include <cstddef>
#include <exception>

#include "delivery/FileNames.h"
#include "store/StoreError.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {
namespace {

void removeQuietly(IDirectory& directory, const std::string& name) noexcept {
  try {
    removeTree(directory, name);
  } catch (const std::exception&) {
    // The caller is already reporting a failure.
  }
}

}  // namespace

std::int64_t sizeOf(IDirectory& directory, const std::string& name, const FileStatus& status) {
  if (!status.isDirectory()) {
    return status.isRegular() ? status.size : 0;
  }
  std::int64_t total = 0;
  const auto inside = directory.openDirectory(name);
  for (const std::string& each : inside->list()) {
    total = addSizes(total, sizeOf(*inside, each, inside->status(each)));
  }
  return total;
}

bool removeTree(IDirectory& directory, const std::string& name) {
  const FileStatus status = directory.status(name);
  if (!status.isDirectory()) {
    return !status.isAbsent() && directory.remove(name);
  }
  const auto inside = directory.openDirectory(name);
  for (const std::string& each : inside->list()) {
    removeTree(*inside, each);
  }
  directory.removeDirectory(name);
  return true;
}

std::unique_ptr<IFile> createFresh(IDirectory& directory, const std::string& name) {
  try {
    return directory.create(name);
  } catch (const StoreError& error) {
    if (error.error() != EEXIST) {
      throw;
    }
  }
  removeTree(directory, name);
  return directory.create(name);
}

void renameOver(IDirectory& directory, const std::string& from, IDirectory& toDirectory,
                const std::string& to) {
  try {
    directory.rename(from, toDirectory, to);
    return;
  } catch (const StoreError& error) {
    const int code = error.error();
    if (code != EISDIR && code != ENOTEMPTY && code != EEXIST && code != ENOTDIR) {
      throw;
    }
  }
  removeTree(toDirectory, to);
  directory.rename(from, toDirectory, to);
}

std::optional<std::string> readSmallFile(IDirectory& directory, const std::string& name) {
  std::unique_ptr<IFile> file;
  try {
    file = directory.openForReading(name);
  } catch (const StoreError& error) {
    if (error.error() == ENOENT) {
      return std::nullopt;
    }
    throw;
  }
  const FileStatus status = file->status();
  if (!status.isRegular() || status.size > kLargestOwnFile) {
    throw StoreError(StoreError::Reason::Damaged,
                     status.isRegular()
                         ? joined(name, " has ", status.size, " bytes, more than ", kLargestOwnFile)
                         : joined(name, " is not a regular file"),
                     name);
  }
  std::string bytes(static_cast<std::size_t>(status.size), '\0');
  bytes.resize(file->read(bytes.data(), bytes.size()));
  return bytes;
}

void replaceFile(IDirectory& root, const std::string& temporary, IDirectory& directory,
                 const std::string& name, std::string_view bytes, Durability durability) {
  const bool isSynced = durability == Durability::Synced;
  try {
    const auto file = createFresh(root, temporary);
    file->append(bytes.data(), bytes.size());
    if (isSynced) {
      file->sync();
    }
    // NOLINTNEXTLINE(readability-suspicious-call-argument): from the root to the directory.
    renameOver(root, temporary, directory, name);
  } catch (...) {
    removeQuietly(root, temporary);  // Free its space on a full disk.
    throw;
  }
  if (isSynced) {
    directory.sync();
  }
}

void replaceFile(IDirectory& root, const std::string& name, std::string_view bytes,
                 Durability durability) {
  replaceFile(root, std::string(kNewPrefix) + name, root, name, bytes, durability);
}

}  // namespace zentrel::vistabase::ardelivery
