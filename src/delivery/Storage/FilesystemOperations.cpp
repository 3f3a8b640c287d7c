#include "delivery/Storage/FilesystemOperations.h"

#include <dirent.h>

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/operations.hpp>
#include <boost/system/error_code.hpp>
#include <cerrno>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "support/posix/listNames.h"

namespace zentrel::vistabase::ardelivery {
namespace {

namespace fs = boost::filesystem;

using boost::system::error_code;

[[noreturn]] void throwCannotIterate(const fs::path& path, const error_code& error) {
  throw std::runtime_error("Could not iterate over '" + path.string() + "' with error " +
                           error.message());
}

error_code lastError() {
  return {errno, boost::system::system_category()};
}

}  // namespace

bool FilesystemOperations::isFile(const fs::path& path) {
  return fs::is_regular_file(path);
}

bool FilesystemOperations::createDirectories(const fs::path& path) {
  return fs::create_directories(path);
}

bool FilesystemOperations::exists(const fs::path& path) {
  return fs::exists(path);
}

bool FilesystemOperations::remove(const fs::path& path) {
  return fs::remove(path);
}

bool FilesystemOperations::removeAll(const fs::path& path) {
  // A trailing separator or dot would make the system follow a link and delete its target.
  const bool isWithin = path.filename_is_dot() && path.has_parent_path();
  return fs::remove_all(isWithin ? path.parent_path() : path) != 0;
}

std::uint64_t FilesystemOperations::getSize(const fs::path& path) {
  if (isFile(path)) {
    return fs::file_size(path);
  }
  error_code error;
  const fs::recursive_directory_iterator entries(path, error);
  if (error) {
    throwCannotIterate(path, error);
  }
  std::uint64_t total = 0;
  for (const fs::directory_entry& entry : entries) {
    if (entry.status().type() == fs::regular_file) {
      total += fs::file_size(entry.path());
    }
  }
  return total;
}

// Not Boost's iterator, which builds the whole path of each entry: that would be most of what a
// cache operation costs besides its system calls. Failures have the same text as with Boost's.
std::unordered_set<std::string> FilesystemOperations::listDirectory(const fs::path& path) {
  const std::unique_ptr<DIR, DirectoryCloser> directory(::opendir(path.c_str()));
  if (!directory) {
    throwCannotIterate(path, lastError());
  }
  std::unordered_set<std::string> names(10);
  const int failure =
      listNames(directory.get(), [&names](std::string_view name) { names.emplace(name); });
  if (const error_code error{failure, boost::system::system_category()}) {
    if (names.empty()) {
      throwCannotIterate(path, error);
    }
    throw fs::filesystem_error("boost::filesystem::directory_iterator::operator++", path, error);
  }
  return names;
}

}  // namespace zentrel::vistabase::ardelivery
