#include "tests/cpp/SystemCalls.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>

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

void countOpen(int change) {
  if (SystemCalls::current != nullptr) {
    SystemCalls::current->openFiles += change;
  }
}

}  // namespace

extern "C" {

int __real_open64(const char*, int, ...);
ssize_t __real_read(int, void*, size_t);
ssize_t __real_write(int, const void*, size_t);
int __real_close(int);
dirent* __real_readdir64(DIR*);

int __wrap_open64(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = va_arg(rest, mode_t);
  va_end(rest);
  return unlessFailing("open", [=] {
    const int file = __real_open64(path, flags, mode);
    countOpen(file >= 0 ? 1 : 0);
    if (SystemCalls::current != nullptr) {
      SystemCalls::current->openFlags = flags;
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
    countOpen(-1);
    return __real_close(file);
  });
}

dirent* __wrap_readdir64(DIR* directory) {
  const auto failed = unlessFailing("readdir", [] { return 0L; });
  return failed == 0 ? __real_readdir64(directory) : nullptr;
}
}
