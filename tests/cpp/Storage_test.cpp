#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <limits>

#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"
#include "tests/cpp/Errors.h"
#include "tests/cpp/SystemCalls.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::UnorderedElementsAre;

TEST(FilesystemOperations, measuresAndListsFollowingLinksToFilesOnly) {
  const TemporaryDirectory root;
  root.write("dir/three", "333");
  root.write("dir/sub/five", "55555");
  root.write("outside/seven", "7777777");
  boost::filesystem::create_symlink("../outside/seven", root / "dir/link");
  boost::filesystem::create_directory_symlink("../outside", root / "dir/dirlink");
  boost::filesystem::create_symlink("nowhere", root / "dir/dangling");
  FilesystemOperations filesystem;
  EXPECT_EQ(15u, filesystem.getSize(root / "dir"));
  EXPECT_EQ(7u, filesystem.getSize(root / "dir/link"));
  EXPECT_THAT(filesystem.listDirectory(root / "dir"),
              UnorderedElementsAre("three", "sub", "link", "dirlink", "dangling"));
  EXPECT_TRUE(filesystem.isFile(root / "dir/link"));
  EXPECT_FALSE(filesystem.isFile(root / "dir"));
  EXPECT_FALSE(filesystem.exists(root / "dir/dangling"));
}

TEST(FilesystemOperations, saysWhatItCouldNotIterateOver) {
  const TemporaryDirectory root;
  root.write("dir/file", "");
  FilesystemOperations filesystem;
  const auto errorOfListing = [&](const std::string& path) {
    return errorOf([&] { filesystem.listDirectory(path); });
  };
  const std::string couldNot = "Could not iterate over '" + root.path() + "/";
  EXPECT_EQ(couldNot + "gone' with error No such file or directory", errorOfListing(root / "gone"));
  EXPECT_EQ(couldNot + "dir/file' with error Not a directory", errorOfListing(root / "dir/file"));
  EXPECT_EQ(couldNot + "gone' with error No such file or directory",
            errorOf([&] { filesystem.getSize(root / "gone"); }));
  SystemCalls system;
  int listed = 0;  // Of ".", ".." and "file".
  system.errorOf = [&](auto call) { return call == "readdir" && listed-- == 0 ? EIO : 0; };
  EXPECT_EQ(couldNot + "dir' with error " + std::strerror(EIO), errorOfListing(root / "dir"));
  listed = 3;
  EXPECT_THAT(errorOfListing(root / "dir"), testing::StartsWith("boost::filesystem::directory_"));
}

TEST(FileIO, readsAFileThatGrowsMeanwhileKeepingItFromChildProcesses) {
  const TemporaryDirectory root;
  root.write("file", "small");
  SystemCalls system;
  system.errorOf = [&, isFirst = true](auto call) mutable {
    if (call == "read" && std::exchange(isFirst, false)) {
      root.write("file", std::string(50'000, 'x'));
    }
    return 0;
  };
  EXPECT_EQ(std::string(50'000, 'x'), FileIO().readFile(root / "file"));
  EXPECT_EQ(O_CLOEXEC, system.openFlags & O_CLOEXEC);
}

TEST(FileIO, hasOneMessageForEveryFailureAndLeavesNothingOpen) {
  const TemporaryDirectory root;
  const std::string file = root / "file";
  FileIO io;
  io.writeFile(file, "x");
  const std::string message = "Could not open file.";
  EXPECT_EQ(message, errorOf([&] { io.readFile(root / "gone"); }));
  EXPECT_EQ(message, errorOf([&] { io.readFile(root.path()); }));
#ifndef __SANITIZE_ADDRESS__  // Which ends the program when there is no memory.
  const int huge = static_cast<int>(::syscall(SYS_memfd_create, "huge", 0));
  EXPECT_EQ(0, ::ftruncate(huge, std::numeric_limits<off_t>::max() / 4));
  EXPECT_EQ(message, errorOf([&] { io.readFile("/proc/self/fd/" + std::to_string(huge)); }));
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
      SystemCalls system;
      system.errorOf = [&, left = 1, &failing = call, &fault = error](auto made) mutable {
        return made == failing && left-- > 0 ? fault : 0;
      };
      EXPECT_EQ(writes ? ofWriting : ofReading,
                errorOf([&] { writes ? io.writeFile(file, "x") : void(io.readFile(file)); }))
          << call << error;
      EXPECT_EQ(call == "close" && error == EIO ? 1 : 0, system.openFiles) << call << error;
    }
  }
}

TEST(FileIO, readsBackWhatItWroteAndMovedInShortTransfers) {
  const TemporaryDirectory root;
  FileIO io;
  SystemCalls system;
  system.mostBytes = 7;
  for (const std::size_t size : {0u, 1u, 4095u, 4096u, 4097u}) {
    std::string content(size, 'x');
    content.append(size / 4096, '\0');
    io.writeFile(root / "other", content);
    io.moveFile(root / "other", root / "file");
    EXPECT_EQ(content, io.readFile(root / "file"));
  }
  EXPECT_THROW(io.moveFile(root / "other", root / "file"), boost::filesystem::filesystem_error);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
