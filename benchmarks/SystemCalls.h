#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <ctime>
#include <string>

/// What the cache's steps come down to, on prepared paths and static buffers: nothing is parsed,
/// allocated or looked at, beyond what the next call needs.
namespace zentrel::vistabase::ardelivery::bench::calls {

inline char buffer[1024 * 1024];
inline struct stat fileStatus;

inline void statusAt(const std::string& path, int flags, unsigned fields) {
  static struct statx result;
  ::statx(AT_FDCWD, path.c_str(), AT_NO_AUTOMOUNT | flags, fields, &result);
}

inline void status(const std::string& path) {
  statusAt(path, 0, STATX_TYPE | STATX_MODE);
}

/// Of what is to be removed, if it is there.
inline void linkStatus(const std::string& path) {
  statusAt(path, AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_MODE);
}

inline void remove(const std::string& path) {
  linkStatus(path);
  ::unlinkat(AT_FDCWD, path.c_str(), 0);
}

inline void clock() {
  timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
}

inline void readFile(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ::fstat(file, &fileStatus);
  std::size_t room = static_cast<std::size_t>(fileStatus.st_size) + 1;
  for (ssize_t count = 0; (count = ::read(file, buffer, room)) > 0;) {
    room -= static_cast<std::size_t>(count);
  }
  ::close(file);
}

inline void listDirectory(const std::string& path) {
  constexpr std::size_t kListingBytes = 32 * 1024;  // As the C library asks for.
  const int directory = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_DIRECTORY);
  ::fstat(directory, &fileStatus);
  while (::syscall(SYS_getdents64, directory, buffer, kListingBytes) > 0) {
  }
  ::close(directory);
}

/// Replaces the file by the first `length` bytes of `text`.
inline void writeFile(const std::string& path, const std::string& text, std::size_t length) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  // The count is looked at as its caller would: the compiler wants it so.
  if (::write(file, text.data(), length) >= 0) {
    ::close(file);
  }
}

}  // namespace zentrel::vistabase::ardelivery::bench::calls
