#include "tests/cpp/SystemCalls.h"

#include <dirent.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>

namespace {

template <class Real>
auto unlessFailing(std::string_view call, const Real& real) -> decltype(real()) {
  if (const int error = SystemCalls::current == nullptr ? 0 : SystemCalls::current->errorOf(call)) {
    errno = error;
    return decltype(real())(-1);
  }
  return real();
}

std::size_t limited(std::size_t count) {
  return SystemCalls::current == nullptr ? count : std::min(count, SystemCalls::current->mostBytes);
}

}  // namespace

extern "C" {

int __real_open64(const char*, int, ...);
ssize_t __real_read(int, void*, size_t);
ssize_t __real_write(int, const void*, size_t);
int __real_close(int);
dirent* __real_readdir64(DIR*);

int __wrap_open64(const char* path, int flags, int mode) {
  return unlessFailing("open", [=] {
    const int file = __real_open64(path, flags, mode);
    if (SystemCalls* const calls = SystemCalls::current) {
      calls->openFlags = flags;
      calls->openFiles += file >= 0 ? 1 : 0;
    }
    return file;
  });
}

ssize_t __wrap_read(int file, void* buffer, size_t count) {
  return unlessFailing("read", [=] { return __real_read(file, buffer, limited(count)); });
}

ssize_t __wrap_write(int file, const void* buffer, size_t count) {
  return unlessFailing("write", [=] { return __real_write(file, buffer, limited(count)); });
}

int __wrap_close(int file) {
  return unlessFailing("close", [=] {
    return SystemCalls::current == nullptr ? 0 : --SystemCalls::current->openFiles,
           __real_close(file);
  });
}

dirent* __wrap_readdir64(DIR* directory) {
  return unlessFailing("readdir", [] { return 0; }) == 0 ? __real_readdir64(directory) : nullptr;
}

// Android's names, where files are large anyway.
int __wrap_open(const char*, int, int) __attribute__((alias("__wrap_open64")));
int __wrap___open_2(const char*, int, int) __attribute__((alias("__wrap_open64")));
dirent* __wrap_readdir(DIR*) __attribute__((alias("__wrap_readdir64")));
}
