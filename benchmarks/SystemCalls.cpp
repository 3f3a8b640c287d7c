#include "benchmarks/SystemCalls.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>

namespace zentrel::vistabase::ardelivery::bench::calls {
namespace {

constexpr std::size_t kListingBytes = 32 * 1024;  // As the C library asks for.

struct statx result;
struct stat fileStatus;
char content[1024 * 1024];

void statusAt(int directory, const char* path, int flags, unsigned fields) {
  ::statx(directory, path, AT_NO_AUTOMOUNT | flags, fields, &result);
}

constexpr int kDirectoryFlags = O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_DIRECTORY;

/// Opens a directory for deletion, as the C library and Boost do between them.
int openForDeletion(int parent, const char* path) {
  const int directory = ::openat(parent, path, kDirectoryFlags | O_NOFOLLOW);
  ::fstat(directory, &fileStatus);
  ::fcntl(directory, F_GETFL);
  ::fcntl(directory, F_SETFD, FD_CLOEXEC);
  return directory;
}

long list(int directory, char* buffer) {
  return ::syscall(SYS_getdents64, directory, buffer, kListingBytes);
}

void removeContents(int directory) {
  char listing[kListingBytes];
  for (long length = 0; (length = list(directory, listing)) > 0;) {
    for (long offset = 0; offset < length;) {
      const auto* const entry = reinterpret_cast<const dirent64*>(listing + offset);
      offset += entry->d_reclen;
      const char* const name = entry->d_name;
      if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) {
        continue;
      }
      statusAt(directory, name, AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_MODE);
      if (S_ISDIR(result.stx_mode)) {
        const int child = openForDeletion(directory, name);
        removeContents(child);
        ::close(child);
        ::unlinkat(directory, name, AT_REMOVEDIR);
      } else {
        ::unlinkat(directory, name, 0);
      }
    }
  }
}

}  // namespace

void status(const std::string& path) {
  statusAt(AT_FDCWD, path.c_str(), 0, STATX_TYPE | STATX_MODE);
}

void size(const std::string& path) {
  statusAt(AT_FDCWD, path.c_str(), 0, STATX_TYPE | STATX_SIZE);
}

void readFile(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ::fstat(file, &fileStatus);
  std::size_t room = static_cast<std::size_t>(fileStatus.st_size) + 1;
  for (ssize_t count = 0; (count = ::read(file, content, room)) > 0;) {
    room -= static_cast<std::size_t>(count);
  }
  ::close(file);
}

void listDirectory(const std::string& path) {
  static char listing[kListingBytes];
  const int directory = ::open(path.c_str(), kDirectoryFlags);
  ::fstat(directory, &fileStatus);
  while (list(directory, listing) > 0) {
  }
  ::close(directory);
}

void writeFile(const std::string& path, const std::string& text, std::size_t length) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  // The count is looked at as its caller would: the compiler wants it so.
  if (::write(file, text.data(), length) >= 0) {
    ::close(file);
  }
}

void remove(const std::string& path) {
  removeMissing(path);
  ::unlinkat(AT_FDCWD, path.c_str(), 0);
}

void removeMissing(const std::string& path) {
  statusAt(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_MODE);
}

void removeAll(const std::string& path) {
  removeMissing(path);
  const int directory = openForDeletion(AT_FDCWD, path.c_str());
  removeContents(directory);
  ::close(directory);
  ::unlinkat(AT_FDCWD, path.c_str(), AT_REMOVEDIR);
}

}  // namespace zentrel::vistabase::ardelivery::bench::calls
