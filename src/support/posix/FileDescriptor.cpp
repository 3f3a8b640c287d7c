#include "support/posix/FileDescriptor.h"

#include <unistd.h>

#include <utility>

namespace zentrel::vistabase::ardelivery {
namespace {

/// `transfer` is given an offset and a count, and moves up to that many bytes as read(2) does.
template <class Transfer>
ssize_t transferFully(std::size_t count, const Transfer& transfer) {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t moved = retryOnInterrupt([&] { return transfer(done, count - done); });
    if (moved < 0) {
      return -1;
    }
    if (moved == 0) {
      break;
    }
    done += static_cast<std::size_t>(moved);
  }
  return static_cast<ssize_t>(done);
}

}  // namespace

FileDescriptor::~FileDescriptor() {
  close();
}

bool FileDescriptor::close() noexcept {
  const int descriptor = std::exchange(descriptor_, -1);
  return descriptor >= 0 && retryOnInterrupt([descriptor] { return ::close(descriptor); }) == 0;
}

ssize_t readFully(int descriptor, void* buffer, std::size_t count) noexcept {
  return transferFully(count, [=](std::size_t offset, std::size_t rest) {
    return ::read(descriptor, static_cast<char*>(buffer) + offset, rest);
  });
}

ssize_t writeFully(int descriptor, const void* buffer, std::size_t count) noexcept {
  return transferFully(count, [=](std::size_t offset, std::size_t rest) {
    return ::write(descriptor, static_cast<const char*>(buffer) + offset, rest);
  });
}

}  // namespace zentrel::vistabase::ardelivery
