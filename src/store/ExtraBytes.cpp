#include "store/ExtraBytes.h"

#include <cerrno>
#include <memory>

#include "delivery/FileNames.h"
#include "store/StoreError.h"
#include "store/fileTrees.h"

namespace zentrel::vistabase::ardelivery {

std::optional<std::string> ExtraBytes::read(const std::string& name) {
  const auto directory = open();
  return directory ? readSmallFile(*directory, name) : std::nullopt;
}

void ExtraBytes::replace(const std::string& name, std::string_view bytes) {
  auto directory = open();
  if (!directory) {
    removeTree(root_, kExtraName);  // Anything there is not a directory.
    root_.makeDirectory(kExtraName);
    root_.sync();
    directory = root_.openDirectory(kExtraName);
  }
  replaceFile(root_, std::string(kNewExtraName), *directory, name, bytes, Durability::Synced);
}

std::optional<std::string> ExtraBytes::remove(const std::string& name) {
  const auto directory = open();
  if (!directory || directory->status(name).isAbsent()) {
    return std::nullopt;
  }
  std::optional<std::string> bytes;
  try {
    bytes = readSmallFile(*directory, name);
  } catch (const StoreError&) {
    // Unreadable bytes cannot be restored.
  }
  removeTree(*directory, name);
  try {
    directory->sync();
  } catch (const StoreError&) {
    if (bytes) {
      replace(name, *bytes);
    }
    throw;
  }
  return bytes;
}

std::unique_ptr<IDirectory> ExtraBytes::open() {
  try {
    return root_.openDirectory(kExtraName);
  } catch (const StoreError& error) {
    const int code = error.error();
    if (code == ENOENT || code == ENOTDIR || code == ELOOP) {
      return nullptr;
    }
    throw;
  }
}

}  // namespace zentrel::vistabase::ardelivery
