#include "delivery/Storage/FileIO.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <boost/filesystem/operations.hpp>
#include <cstdint>
#include <stdexcept>

#include "support/posix/FileDescriptor.h"

namespace zentrel::vistabase::ardelivery {
namespace {

constexpr mode_t kMode = 0666;  // Before the umask.
constexpr std::size_t kBufferForUnknownSize = 4096;

// The same text for every failed read or write, because report collectors match on it.
[[noreturn]] void throwFailed() {
  throw std::runtime_error("Could not open file.");
}

/// One byte more than the file's size, so that the first short read reveals its end.
std::size_t initialBufferSize(off_t fileSize, std::size_t limit) {
  if (fileSize <= 0) {
    return kBufferForUnknownSize;
  }
  if (static_cast<std::uint64_t>(fileSize) >= limit) {
    throwFailed();
  }
  return static_cast<std::size_t>(fileSize) + 1;
}

std::string readWhole(const std::string& path) {
  const FileDescriptor file(
      retryOnInterrupt([&path] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
  struct stat status = {};
  if (!file.isOpen() || ::fstat(file.get(), &status) != 0) {
    throwFailed();
  }
  std::string content;
  content.resize(initialBufferSize(status.st_size, content.max_size()));
  std::size_t filled = 0;
  for (;;) {
    const std::size_t room = content.size() - filled;
    const ssize_t count = readFully(file.get(), &content[filled], room);
    if (count < 0) {
      throwFailed();
    }
    filled += static_cast<std::size_t>(count);
    if (static_cast<std::size_t>(count) < room) {
      content.resize(filled);
      return content;
    }
    content.resize(content.size() + content.size() / 2);
  }
}

}  // namespace

std::string FileIO::readFile(const std::string& path) {
  try {
    return readWhole(path);
  } catch (...) {  // Such as bad_alloc, for a huge file.
    throwFailed();
  }
}

void FileIO::writeFile(const std::string& path, const std::string& content) {
  FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, kMode));
  const bool written = file.isOpen() && writeFully(file.get(), content.data(), content.size()) ==
                                            static_cast<ssize_t>(content.size());
  if (!file.close() || !written) {
    throwFailed();
  }
}

void FileIO::moveFile(const std::string& from, const std::string& to) {
  boost::filesystem::rename(from, to);
}

}  // namespace zentrel::vistabase::ardelivery
