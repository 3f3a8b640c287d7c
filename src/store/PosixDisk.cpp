#include "store/PosixDisk.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <utility>

#include "store/StoreError.h"
#include "support/posix/FileDescriptor.h"
#include "support/posix/listNames.h"

namespace zentrel::vistabase::ardelivery {
namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;
// Before the umask.
constexpr mode_t kFileMode = 0666;
constexpr mode_t kDirectoryMode = 0777;

// Neither blocks on a pipe or a device nor follows a link.
constexpr int kOpenFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
constexpr int kDirectoryFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

enum class Access { kRead, kChange };

[[noreturn]] void fail(const char* action, const std::string& path, Access access) {
  throw StoreError::ofSystem(action, path, errno, access == Access::kChange);
}

/// Throws if a system call failed.
void require(bool isDone, const char* action, const std::string& path, Access access) {
  if (!isDone) {
    fail(action, path, access);
  }
}

std::int64_t toNanoseconds(const timespec& time) {
  constexpr std::int64_t latest = INT64_MAX / kNanoseconds - 1;
  const std::int64_t seconds =
      std::clamp(static_cast<std::int64_t>(time.tv_sec), -latest, latest);  // Year 2262.
  return seconds * kNanoseconds + time.tv_nsec;
}

FileStatus toStatus(const struct stat& status) {
  FileStatus result;
  result.kind = S_ISREG(status.st_mode)   ? FileStatus::Kind::Regular
                : S_ISDIR(status.st_mode) ? FileStatus::Kind::Directory
                                          : FileStatus::Kind::Other;
  result.size = static_cast<std::int64_t>(status.st_size);
  result.links = status.st_nlink;
  result.modified = toNanoseconds(status.st_mtim);
  result.changed = toNanoseconds(status.st_ctim);
  result.device = status.st_dev;
  result.inode = status.st_ino;
  return result;
}

FileStatus statusOf(const FileDescriptor& file, const std::string& path) {
  struct stat status = {};
  require(::fstat(file.get(), &status) == 0, "stat", path, Access::kRead);
  return toStatus(status);
}

class PosixFile final : public IFile {
 public:
  PosixFile(int descriptor, std::string path) : file_(descriptor), path_(std::move(path)) {}

  std::size_t read(void* bytes, std::size_t count) override {
    const ssize_t done = readFully(file_.get(), bytes, count);
    require(done >= 0, "read", path_, Access::kRead);
    return static_cast<std::size_t>(done);
  }
  void append(const void* bytes, std::size_t count) override {
    const ssize_t done = writeFully(file_.get(), bytes, count);
    require(done >= 0 && static_cast<std::size_t>(done) == count, "write", path_, Access::kChange);
  }
  void truncate() override {
    require(retryOnInterrupt([this] { return ::ftruncate(file_.get(), 0); }) == 0, "truncate",
            path_, Access::kChange);
  }
  void sync() override {
    require(retryOnInterrupt([this] { return ::fsync(file_.get()); }) == 0, "sync", path_,
            Access::kChange);
  }
  FileStatus status() override { return statusOf(file_, path_); }

 private:
  const FileDescriptor file_;
  const std::string path_;
};

class PosixDirectory final : public IDirectory {
 public:
  PosixDirectory(int descriptor, std::string path)
      : directory_(descriptor), path_(std::move(path)) {}

  std::unique_ptr<IFile> openForReading(const std::string& name) override {
    return open(name, O_RDONLY, Access::kRead);
  }
  std::unique_ptr<IFile> openForAppending(const std::string& name) override {
    return open(name, O_WRONLY | O_APPEND, Access::kChange);
  }
  std::unique_ptr<IFile> create(const std::string& name) override {
    return open(name, O_WRONLY | O_APPEND | O_CREAT | O_EXCL, Access::kChange);
  }
  std::unique_ptr<IDirectory> openDirectory(const std::string& name) override {
    const int descriptor = openAt(name, kDirectoryFlags | O_NOFOLLOW);
    require(descriptor >= 0, "open", pathOf(name), Access::kRead);
    return std::make_unique<PosixDirectory>(descriptor, pathOf(name));
  }

  void makeDirectory(const std::string& name) override {
    require(::mkdirat(directory_.get(), name.c_str(), kDirectoryMode) == 0, "create", pathOf(name),
            Access::kChange);
  }
  void rename(const std::string& from, IDirectory& toDirectory, const std::string& to) override {
    const auto& target = static_cast<PosixDirectory&>(toDirectory);
    const int result =
        ::renameat(directory_.get(), from.c_str(), target.directory_.get(), to.c_str());
    require(result == 0, "rename to", target.pathOf(to), Access::kChange);
  }
  bool remove(const std::string& name) override {
    const bool isRemoved = ::unlinkat(directory_.get(), name.c_str(), 0) == 0;
    require(isRemoved || errno == ENOENT, "remove", pathOf(name), Access::kChange);
    return isRemoved;
  }
  void removeDirectory(const std::string& name) override {
    require(::unlinkat(directory_.get(), name.c_str(), AT_REMOVEDIR) == 0, "remove", pathOf(name),
            Access::kChange);
  }
  void touch(const std::string& name, std::int64_t modified) override {
    timespec times[2] = {};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(modified / kNanoseconds);
    times[1].tv_nsec = static_cast<long>(modified % kNanoseconds);
    require(::utimensat(directory_.get(), name.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0,
            "set the modification time of", pathOf(name), Access::kChange);
  }
  void sync() override {
    const bool isSynced = retryOnInterrupt([this] { return ::fsync(directory_.get()); }) == 0 ||
                          errno == EINVAL ||
                          errno == ENOTSUP;  // The file system cannot sync directories.
    require(isSynced, "sync", path_, Access::kChange);
  }

  FileStatus status(const std::string& name) override {
    struct stat status = {};
    if (::fstatat(directory_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
      return toStatus(status);
    }
    require(errno == ENOENT, "stat", pathOf(name), Access::kRead);
    return {};
  }
  FileStatus status() override { return statusOf(directory_, path_); }

  std::vector<std::string> list() override {
    // Through a new descriptor, whose position is at the first name.
    FileDescriptor descriptor(openAt(".", kDirectoryFlags));
    const std::unique_ptr<DIR, DirectoryCloser> directory(
        descriptor.isOpen() ? ::fdopendir(descriptor.get()) : nullptr);
    require(directory != nullptr, "list", path_, Access::kRead);
    descriptor.release();
    std::vector<std::string> names;
    errno =
        listNames(directory.get(), [&names](std::string_view name) { names.emplace_back(name); });
    require(errno == 0, "list", path_, Access::kRead);
    return names;
  }
  std::int64_t freeBytes() override {
    struct statvfs status = {};
    const int result = retryOnInterrupt([&] { return ::fstatvfs(directory_.get(), &status); });
    if (result != 0) {
      return -1;
    }
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    const std::uint64_t block = status.f_frsize == 0 ? 1 : status.f_frsize;
    const bool isMore = status.f_bavail > most / block;
    return static_cast<std::int64_t>(isMore ? most : status.f_bavail * block);
  }

  bool tryLock() override {
    const int result =
        retryOnInterrupt([this] { return ::flock(directory_.get(), LOCK_EX | LOCK_NB); });
    require(result == 0 || errno == EWOULDBLOCK, "lock", path_, Access::kRead);
    return result == 0;
  }
  void unlock() noexcept override { ::flock(directory_.get(), LOCK_UN); }

 private:
  std::string pathOf(const std::string& name) const { return path_ + '/' + name; }

  int openAt(const std::string& name, int flags) const {
    return retryOnInterrupt(
        [&] { return ::openat(directory_.get(), name.c_str(), flags, kFileMode); });
  }
  std::unique_ptr<IFile> open(const std::string& name, int flags, Access access) const {
    const int descriptor = openAt(name, flags | kOpenFlags);
    require(descriptor >= 0, "open", pathOf(name), access);
    return std::make_unique<PosixFile>(descriptor, pathOf(name));
  }

  const FileDescriptor directory_;
  const std::string path_;
};

std::string parentOf(const std::string& path) {
  const std::size_t end = path.find_last_not_of('/');
  const std::size_t slash = end == std::string::npos ? end : path.rfind('/', end);
  return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::shared_ptr<PosixDirectory> openExisting(const std::string& path) {
  const int descriptor = retryOnInterrupt([&] { return ::open(path.c_str(), kDirectoryFlags); });
  require(descriptor >= 0, "open", path, Access::kRead);
  return std::make_shared<PosixDirectory>(descriptor, path);
}

/// Creates the directory and its missing parents, durably.
void makeDirectories(const std::string& path) {
  if (::mkdir(path.c_str(), kDirectoryMode) != 0) {
    if (errno == EEXIST) {
      return;
    }
    const std::string parent = parentOf(path);
    require(errno == ENOENT && parent != path && parent != ".", "create", path, Access::kChange);
    makeDirectories(parent);
    const bool isMade = ::mkdir(path.c_str(), kDirectoryMode) == 0 || errno == EEXIST;
    require(isMade, "create", path, Access::kChange);
  }
  openExisting(parentOf(path))->sync();
}

}  // namespace

std::shared_ptr<IDirectory> openPosixRoot(const std::string& path) {
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) {
    makeDirectories(path);
  }
  return openExisting(path);
}

std::shared_ptr<IDirectory> openPosixDirectory(const std::string& path) {
  return openExisting(path);
}

}  // namespace zentrel::vistabase::ardelivery
