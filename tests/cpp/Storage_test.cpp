#include <dirent.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <limits>
#include <string_view>

#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"
#include "tests/cpp/Errors.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace {

/// How this program's system calls on files behave: the linker redirects them here (--wrap).
struct SystemCalls {
  /// Runs first; returns the errno with which the call fails, or 0.
  std::function<int(std::string_view call)> errorOf = [](auto) { return 0; };
  std::size_t mostBytes = static_cast<std::size_t>(-1);  ///< Moved by one read or write.
  int openFlags = 0;                                     ///< Of the last open.
};

/// Never destroyed, since the program may read files until its end.
SystemCalls& calls() {
  static SystemCalls& calls = *new SystemCalls;
  return calls;
}

/// Fails the call, or makes the real one.
template <class Real>
auto intercept(std::string_view call, const Real& real) -> decltype(real()) {
  if (const int error = calls().errorOf(call)) {
    errno = error;
    return -1;
  }
  return real();
}

}  // namespace

extern "C" {

int __real_open64(const char*, int, ...);
ssize_t __real_read(int, void*, size_t);
ssize_t __real_write(int, const void*, size_t);
int __real_close(int);
dirent* __real_readdir64(DIR*);

int __wrap_open64(const char* path, int flags, int mode) {
  calls().openFlags = flags;
  return intercept("open", [=] { return __real_open64(path, flags, mode); });
}

ssize_t __wrap_read(int file, void* buffer, size_t count) {
  return intercept("read",
                   [=] { return __real_read(file, buffer, std::min(count, calls().mostBytes)); });
}

ssize_t __wrap_write(int file, const void* buffer, size_t count) {
  return intercept("write",
                   [=] { return __real_write(file, buffer, std::min(count, calls().mostBytes)); });
}

int __wrap_close(int file) {
  return intercept("close", [=] { return __real_close(file); });
}

dirent* __wrap_readdir64(DIR* directory) {
  return intercept("readdir", [] { return 0; }) == 0 ? __real_readdir64(directory) : nullptr;
}

// Android's names; files there are large anyway.
int __wrap_open(const char*, int, int) __attribute__((alias("__wrap_open64")));
int __wrap___open_2(const char*, int, int) __attribute__((alias("__wrap_open64")));
dirent* __wrap_readdir(DIR*) __attribute__((alias("__wrap_readdir64")));
}

namespace zentrel::vistabase::ardelivery {
namespace {

struct StorageTest : testing::Test {
  ~StorageTest() override { calls() = {}; }

  TemporaryDirectory root_;
  FilesystemOperations filesystem_;
  FileIO io_;
};

TEST_F(StorageTest, followsLinksToFilesOnlyAndRefusesTooLongNames) {
  root_.write("dir/three", "333");
  root_.write("dir/sub/five", "55555");
  root_.write("outside/seven", "7777777");
  boost::filesystem::create_symlink("../outside/seven", root_ / "dir/link");
  boost::filesystem::create_directory_symlink("../outside", root_ / "dir/dirlink");
  boost::filesystem::create_symlink("nowhere", root_ / "dir/dangling");
  EXPECT_EQ(15u, filesystem_.getSize(root_ / "dir"));
  EXPECT_EQ(7u, filesystem_.getSize(root_ / "dir/link"));
  EXPECT_THAT(filesystem_.listDirectory(root_ / "dir"),
              testing::UnorderedElementsAre("three", "sub", "link", "dirlink", "dangling"));
  EXPECT_TRUE(filesystem_.isFile(root_ / "dir/link"));
  EXPECT_FALSE(filesystem_.isFile(root_ / "dir"));
  EXPECT_FALSE(filesystem_.exists(root_ / "dir/dangling"));
  const std::string name = root_ / std::string(300, 'x');
  EXPECT_THROW(filesystem_.exists(name), boost::filesystem::filesystem_error);
  EXPECT_THROW(filesystem_.isFile(name), boost::filesystem::filesystem_error);
}

TEST_F(StorageTest, namesTheDirectoryThatItCannotIterateOver) {
  root_.write("dir/file", "");
  const auto errorOfListing = [&](const std::string& name) {
    return errorOf([&] { filesystem_.listDirectory(root_ / name); });
  };
  const std::string couldNot = "Could not iterate over '" + root_.path() + "/";
  EXPECT_EQ(couldNot + "gone' with error No such file or directory", errorOfListing("gone"));
  EXPECT_EQ(couldNot + "dir/file' with error Not a directory", errorOfListing("dir/file"));
  EXPECT_EQ(couldNot + "gone' with error No such file or directory",
            errorOf([&] { filesystem_.getSize(root_ / "gone"); }));
  int listed = 0;  // Of ".", ".." and "file".
  calls().errorOf = [&](auto call) { return call == "readdir" && listed-- == 0 ? EIO : 0; };
  EXPECT_EQ(couldNot + "dir' with error " + std::strerror(EIO), errorOfListing("dir"));
  listed = 3;
  EXPECT_THAT(errorOfListing("dir"), testing::StartsWith("boost::filesystem::directory_"));
}

TEST_F(StorageTest, readsAFileThatGrowsMeanwhileWithoutLeakingItToChildProcesses) {
  root_.write("file", "small");
  calls().errorOf = [&, isFirst = true](auto call) mutable {
    if (call == "read" && std::exchange(isFirst, false)) {
      root_.write("file", std::string(50'000, 'x'));
    }
    return 0;
  };
  EXPECT_EQ(std::string(50'000, 'x'), io_.readFile(root_ / "file"));
  EXPECT_EQ(O_CLOEXEC, calls().openFlags & O_CLOEXEC);
}

TEST_F(StorageTest, reportsEveryFailedTransferAlikeAndLeavesNothingOpen) {
  const std::string message = "Could not open file.", file = root_ / "file";
  io_.writeFile(file, "x");
  EXPECT_EQ(message, errorOf([&] { io_.readFile(root_ / "gone"); }));
  EXPECT_EQ(message, errorOf([&] { io_.readFile(root_.path()); }));
#ifndef __SANITIZE_ADDRESS__  // Which ends the program when out of memory.
  const int huge = static_cast<int>(::syscall(SYS_memfd_create, "huge", 0));
  EXPECT_EQ(0, ::ftruncate(huge, std::numeric_limits<off_t>::max() / 4));
  EXPECT_EQ(message, errorOf([&] { io_.readFile("/proc/self/fd/" + std::to_string(huge)); }));
  ::close(huge);
#endif
  const struct {
    std::string call;
    int error;
    std::string ofReading, ofWriting;
  } cases[] = {
      {"open", EIO, message, message},          {"open", EINTR, "no error", message},
      {"read", EIO, message, "no error"},       {"write", ENOSPC, "no error", message},
      {"close", EIO, "no error", message},      {"read", EINTR, "no error", "no error"},
      {"write", EINTR, "no error", "no error"}, {"close", EINTR, "no error", "no error"},
  };
  for (const auto& [call, error, ofReading, ofWriting] : cases) {
    for (const bool writes : {false, true}) {
      const std::ptrdiff_t descriptors = openDescriptors();
      calls().errorOf = [&, left = 1, &failing = call, &fault = error](auto made) mutable {
        return made == failing && left-- > 0 ? fault : 0;
      };
      EXPECT_EQ(writes ? ofWriting : ofReading,
                errorOf([&] { writes ? io_.writeFile(file, "x") : void(io_.readFile(file)); }))
          << call << error;
      const int failed = call == "close" && error == EIO ? 1 : 0;
      EXPECT_EQ(descriptors + failed, openDescriptors()) << call << error;
    }
  }
}

TEST_F(StorageTest, readsBackWhatItWroteAndMovedInShortTransfers) {
  calls().mostBytes = 7;
  for (const std::size_t size : {0u, 1u, 4095u, 4096u, 4097u}) {
    const std::string content = std::string(size, 'x') + std::string(size / 4096, '\0');
    io_.writeFile(root_ / "other", content);
    io_.moveFile(root_ / "other", root_ / "file");
    EXPECT_EQ(content, io_.readFile(root_ / "file"));
  }
  EXPECT_THROW(io_.moveFile(root_ / "other", root_ / "file"), boost::filesystem::filesystem_error);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
