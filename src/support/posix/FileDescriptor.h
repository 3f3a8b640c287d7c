#pragma once

namespace zentrel::vistabase::ardelivery {

/// Owns an open POSIX file descriptor, or none (-1), and closes it when destroyed.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor();

  int get() const noexcept { return descriptor_; }
  bool isOpen() const noexcept { return descriptor_ >= 0; }

  /// Closes the descriptor now; false when that failed, or when there was none.
  bool close() noexcept;

 private:
  int descriptor_;
};

}  // namespace zentrel::vistabase::ardelivery
