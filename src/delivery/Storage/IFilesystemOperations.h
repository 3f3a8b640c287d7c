#pragma once

#include <boost/filesystem/path.hpp>
#include <cstdint>
#include <string>
#include <unordered_set>

namespace zentrel::vistabase::ardelivery {

/// Questions about and changes to the filesystem's tree. Contents of files are IFileIO's.
///
/// Status follows symbolic links throughout; deletion does not. Unless an operation says otherwise,
/// it fails with boost::filesystem::filesystem_error, possibly with part of its work done.
class IFilesystemOperations {
 public:
  virtual ~IFilesystemOperations() = default;

  /// Whether the path is a regular file; false when nothing is there.
  virtual bool isFile(const boost::filesystem::path& path) = 0;

  /// Creates the directory and every missing parent. False when it was there already.
  virtual bool createDirectories(const boost::filesystem::path& path) = 0;

  /// Whether anything is at the path.
  virtual bool exists(const boost::filesystem::path& path) = 0;

  /// Removes one file, link or empty directory. False when nothing was there.
  virtual bool remove(const boost::filesystem::path& path) = 0;

  /// Removes the path and everything below it. False when nothing was there.
  virtual bool removeAll(const boost::filesystem::path& path) = 0;

  /// A file's size, or the sum over all files at any depth below a directory, in bytes. Links to
  /// files count as their targets; links to directories are not entered. Throws std::runtime_error
  /// "Could not iterate over '...' with error ..." for what is neither.
  virtual std::uint64_t getSize(const boost::filesystem::path& path) = 0;

  /// The names directly inside a directory, of every kind, without "." and "..". Throws
  /// std::runtime_error "Could not iterate over '...' with error ..." when it cannot be opened.
  virtual std::unordered_set<std::string> listDirectory(const boost::filesystem::path& path) = 0;
};

}  // namespace zentrel::vistabase::ardelivery
