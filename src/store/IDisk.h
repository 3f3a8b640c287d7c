#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// The disk operations that the stores use. Every operation succeeds or throws a StoreError with
/// the path and errno. Changes are not durable until synced.
namespace zentrel::vistabase::ardelivery {

/// What a name or an open file refers to. Links are not followed.
struct FileStatus {
  enum class Kind { Absent, Regular, Directory, Other };

  Kind kind = Kind::Absent;
  std::int64_t size = 0;      ///< Bytes.
  std::uint64_t links = 0;    ///< Hard links.
  std::int64_t modified = 0;  ///< Last modification, in nanoseconds since the Unix epoch.
  std::int64_t changed = 0;   ///< Last status change, likewise.
  std::uint64_t device = 0, inode = 0;

  bool isAbsent() const noexcept { return kind == Kind::Absent; }
  bool isRegular() const noexcept { return kind == Kind::Regular; }
  bool isDirectory() const noexcept { return kind == Kind::Directory; }

  /// A regular file with no other hard link, which could be outside the root.
  bool isOwn() const noexcept { return isRegular() && links == 1; }

  bool isSameFile(const FileStatus& other) const noexcept {
    return device == other.device && inode == other.inode;
  }
  /// Whether nobody has touched the file since.
  bool isUnchangedSince(const FileStatus& earlier) const noexcept {
    return isSameFile(earlier) && size == earlier.size && links == earlier.links &&
           modified == earlier.modified && changed == earlier.changed;
  }
};

/// An open file, closed when destroyed.
class IFile {
 public:
  virtual ~IFile() = default;

  /// Returns the number of bytes read, less than `count` only at the end of the file.
  virtual std::size_t read(void* bytes, std::size_t count) = 0;
  /// Appends all bytes.
  virtual void append(const void* bytes, std::size_t count) = 0;
  /// Truncates the file to zero bytes.
  virtual void truncate() = 0;
  /// Makes the bytes durable.
  virtual void sync() = 0;
  virtual FileStatus status() = 0;
};

/// A directory. A name is that of a direct child: not a path, and never "." or "..".
class IDirectory {
 public:
  virtual ~IDirectory() = default;

  /// Opening follows no link and never blocks on a pipe.
  virtual std::unique_ptr<IFile> openForReading(const std::string& name) = 0;
  virtual std::unique_ptr<IFile> openForAppending(const std::string& name) = 0;
  /// Creates a file to append to. Fails with EEXIST if the name exists.
  virtual std::unique_ptr<IFile> create(const std::string& name) = 0;
  virtual std::unique_ptr<IDirectory> openDirectory(const std::string& name) = 0;

  virtual void makeDirectory(const std::string& name) = 0;
  /// Replaces whatever has the new name, unless it is a directory.
  virtual void rename(const std::string& from, IDirectory& toDirectory, const std::string& to) = 0;
  /// Removes a file, or a link but not its target. Returns false if the name does not exist.
  virtual bool remove(const std::string& name) = 0;
  virtual void removeDirectory(const std::string& name) = 0;
  /// Sets the modification time of a file, or of a link itself.
  virtual void touch(const std::string& name, std::int64_t modified) = 0;
  /// Makes the names in the directory durable. Does nothing on file systems that cannot.
  virtual void sync() = 0;

  virtual FileStatus status(const std::string& name) = 0;
  virtual FileStatus status() = 0;  ///< The directory's own.
  virtual std::vector<std::string> list() = 0;
  /// Returns the bytes that this process may still write to the file system; -1 if unknown.
  virtual std::int64_t freeBytes() = 0;

  /// Locks the directory exclusively until `unlock`, or until it is closed. Returns false if the
  /// lock is taken.
  virtual bool tryLock() = 0;
  virtual void unlock() noexcept = 0;
};

/// Opens a root by path, creating it and its parents if missing.
using OpenRoot = std::function<std::shared_ptr<IDirectory>(const std::string& path)>;

}  // namespace zentrel::vistabase::ardelivery
