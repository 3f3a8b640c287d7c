#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// What the stores ask of a disk. Every operation does what it says or throws a StoreError with the
/// path and errno, and leaves what it changes to the next power cut until it is synced.
namespace zentrel::vistabase::ardelivery {

/// What a name or an open file stands for. Links are not followed.
struct FileStatus {
  enum class Kind { Absent, Regular, Directory, Other };

  Kind kind = Kind::Absent;
  std::int64_t size = 0;      ///< Bytes.
  std::uint64_t links = 0;    ///< Names that it has.
  std::int64_t modified = 0;  ///< Nanoseconds since the Unix epoch,
  std::int64_t changed = 0;   ///< as is the last change of its status.
  std::uint64_t device = 0, inode = 0;

  bool isAbsent() const noexcept { return kind == Kind::Absent; }
  bool isRegular() const noexcept { return kind == Kind::Regular; }
  bool isDirectory() const noexcept { return kind == Kind::Directory; }

  /// A regular file without another name, which could lie outside the root.
  bool isOwn() const noexcept { return isRegular() && links == 1; }

  bool isSameFile(const FileStatus& other) const noexcept {
    return device == other.device && inode == other.inode;
  }
  /// Whether nobody has touched the file in between.
  bool isUnchangedSince(const FileStatus& earlier) const noexcept {
    return isSameFile(earlier) && size == earlier.size && links == earlier.links &&
           modified == earlier.modified && changed == earlier.changed;
  }
};

/// An open file, closed when destroyed.
class IFile {
 public:
  virtual ~IFile() = default;

  /// Returns the number of bytes read, less than `count` only at the end.
  virtual std::size_t read(void* bytes, std::size_t count) = 0;
  /// Adds all bytes at the end.
  virtual void append(const void* bytes, std::size_t count) = 0;
  /// Cuts the file to nothing.
  virtual void truncate() = 0;
  /// Returns once the bytes would outlast a power cut.
  virtual void sync() = 0;
  virtual FileStatus status() = 0;
};

/// A directory. Names are those directly in it: no path, never "." or "..".
class IDirectory {
 public:
  virtual ~IDirectory() = default;

  /// Opening follows no link and never waits for the other end of a pipe.
  virtual std::unique_ptr<IFile> openForReading(const std::string& name) = 0;
  virtual std::unique_ptr<IFile> openForAppending(const std::string& name) = 0;
  /// A new file, to append to. Fails with EEXIST if there is anything of that name.
  virtual std::unique_ptr<IFile> create(const std::string& name) = 0;
  virtual std::unique_ptr<IDirectory> openDirectory(const std::string& name) = 0;

  virtual void makeDirectory(const std::string& name) = 0;
  /// Replaces what has the new name, unless that is a directory.
  virtual void rename(const std::string& from, IDirectory& toDirectory, const std::string& to) = 0;
  /// Removes a file or a link, not its target. False if nothing has the name.
  virtual bool remove(const std::string& name) = 0;
  virtual void removeDirectory(const std::string& name) = 0;
  /// Sets when the file was last modified; of a link, when the link was.
  virtual void touch(const std::string& name, std::int64_t modified) = 0;
  /// Returns once the names in the directory would outlast a power cut. Nothing on file systems
  /// that cannot.
  virtual void sync() = 0;

  virtual FileStatus status(const std::string& name) = 0;
  virtual FileStatus status() = 0;  ///< Of the directory itself.
  virtual std::vector<std::string> list() = 0;
  /// Bytes that this process may still write to the file system; -1 if that cannot be told.
  virtual std::int64_t freeBytes() = 0;

  /// Takes the exclusive lock on the directory for as long as it is open, or until `unlock`. False
  /// if somebody else has it.
  virtual bool tryLock() = 0;
  virtual void unlock() noexcept = 0;
};

/// Opens a root by its path, and creates it with its parents if it is missing.
using OpenRoot = std::function<std::shared_ptr<IDirectory>(const std::string& path)>;

}  // namespace zentrel::vistabase::ardelivery
