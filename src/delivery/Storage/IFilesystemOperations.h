#pragma once

#include <boost/filesystem/path.hpp>
#include <cstdint>
#include <string>
#include <unordered_set>

namespace zentrel::vistabase::ardelivery {

/// Queries and changes the directory tree. IFileIO handles file contents.
///
/// Status queries follow symbolic links; deletion does not. Unless documented otherwise, operations
/// fail with boost::filesystem::filesystem_error, possibly with part of their work done.
class IFilesystemOperations {
 public:
  virtual ~IFilesystemOperations() = default;

  /// Returns whether the path is a regular file; false if it does not exist.
  virtual bool isFile(const boost::filesystem::path& path) = 0;

  /// Creates the directory and its missing parents. Returns false if it already existed.
  virtual bool createDirectories(const boost::filesystem::path& path) = 0;

  /// Returns whether the path exists.
  virtual bool exists(const boost::filesystem::path& path) = 0;

  /// Removes a file, link or empty directory. Returns false if the path does not exist.
  virtual bool remove(const boost::filesystem::path& path) = 0;

  /// Removes the path and everything below it. Returns false if the path does not exist.
  virtual bool removeAll(const boost::filesystem::path& path) = 0;

  /// Returns the size of a file, or of all files at any depth below a directory, in bytes. Links to
  /// files count as their targets; links to directories are not followed. Throws std::runtime_error
  /// "Could not iterate over '...' with error ..." for anything else.
  virtual std::uint64_t getSize(const boost::filesystem::path& path) = 0;

  /// Returns all names in a directory except "." and "..". Throws std::runtime_error "Could not
  /// iterate over '...' with error ..." if it cannot be opened.
  virtual std::unordered_set<std::string> listDirectory(const boost::filesystem::path& path) = 0;
};

}  // namespace zentrel::vistabase::ardelivery
