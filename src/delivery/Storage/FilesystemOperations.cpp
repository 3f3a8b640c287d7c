#include "delivery/Storage/FilesystemOperations.h"

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/operations.hpp>
#include <boost/system/error_code.hpp>
#include <stdexcept>

namespace zentrel::vistabase::ardelivery {
namespace {

namespace fs = boost::filesystem;

/// Opens a directory for iteration with this cache's own message when that fails.
template <class Iterator>
Iterator iterate(const fs::path& path) {
  boost::system::error_code error;
  Iterator iterator(path, error);
  if (error) {
    throw std::runtime_error("Could not iterate over '" + path.string() + "' with error " +
                             error.message());
  }
  return iterator;
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
  // A separator or a dot at the end would have the system follow a link, and delete its target.
  return fs::remove_all(path.filename_is_dot() ? path.parent_path() : path) != 0;
}

std::uint64_t FilesystemOperations::getSize(const fs::path& path) {
  if (isFile(path)) {
    return fs::file_size(path);
  }
  std::uint64_t total = 0;
  for (const fs::directory_entry& entry : iterate<fs::recursive_directory_iterator>(path)) {
    if (entry.status().type() == fs::regular_file) {
      total += fs::file_size(entry.path());
    }
  }
  return total;
}

std::unordered_set<std::string> FilesystemOperations::listDirectory(const fs::path& path) {
  std::unordered_set<std::string> names(10);
  for (const fs::directory_entry& entry : iterate<fs::directory_iterator>(path)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

}  // namespace zentrel::vistabase::ardelivery
