#pragma once

#include <sys/types.h>

#include <cerrno>
#include <cstddef>
#include <utility>

namespace zentrel::vistabase::ardelivery {

/// Repeats a system call as long as signals interrupt it.
template <class Call>
auto retryOnInterrupt(const Call& call) -> decltype(call()) {
  for (;;) {
    const auto result = call();
    if (result != -1 || errno != EINTR) {
      return result;
    }
  }
}

/// Owns an open POSIX file descriptor, or none (-1), and closes it when destroyed.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor();

  int get() const noexcept { return descriptor_; }
  bool isOpen() const noexcept { return descriptor_ >= 0; }

  /// Closes the descriptor. Returns false if that failed, or if there was none.
  bool close() noexcept;

  /// Transfers ownership to the caller.
  int release() noexcept { return std::exchange(descriptor_, -1); }

 private:
  int descriptor_;
};

/// Reads `count` bytes, or up to the end of the file, across interruptions and short reads. Returns
/// the number of bytes read, or -1 on error.
ssize_t readFully(int descriptor, void* buffer, std::size_t count) noexcept;

/// Writes `count` bytes, across interruptions and short writes. Returns the number of bytes
/// written, or -1 on error.
ssize_t writeFully(int descriptor, const void* buffer, std::size_t count) noexcept;

}  // namespace zentrel::vistabase::ardelivery
