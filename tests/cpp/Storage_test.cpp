#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <boost/filesystem/exception.hpp>
#include <chrono>
#include <limits>
#include <thread>

#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::UnorderedElementsAre;

template <class Call>
std::string errorOf(const Call& call) {
  try {
    call();
    return "no error";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(FilesystemOperations, measuresAndListsFollowingLinksToFilesOnly) {
  const TemporaryDirectory root;
  root.write("dir/three", "333");
  root.write("dir/sub/five", "55555");
  root.write("outside/seven", "7777777");
  std::filesystem::create_symlink("../outside/seven", root / "dir/link");
  std::filesystem::create_directory_symlink("../outside", root / "dir/dirlink");
  std::filesystem::create_symlink("nowhere", root / "dir/dangling");
  FilesystemOperations filesystem;
  EXPECT_EQ(15u, filesystem.getSize(root / "dir"));
  EXPECT_EQ(7u, filesystem.getSize(root / "dir/link"));
  EXPECT_THAT(filesystem.listDirectory(root / "dir"),
              UnorderedElementsAre("three", "sub", "link", "dirlink", "dangling"));
  EXPECT_TRUE(filesystem.isFile(root / "dir/link"));
  EXPECT_FALSE(filesystem.isFile(root / "dir"));
  EXPECT_FALSE(filesystem.exists(root / "dir/dangling"));
}

TEST(FilesystemOperations, createsAndRemovesTreesButNotWhatLinksPointTo) {
  const TemporaryDirectory root;
  root.write("outside/kept", "x");
  FilesystemOperations filesystem;
  EXPECT_TRUE(filesystem.createDirectories(root / "x/y/z"));
  EXPECT_FALSE(filesystem.createDirectories(root / "x/y/z"));
  std::filesystem::create_directory_symlink("../outside", root / "x/link");
  EXPECT_THROW(filesystem.remove(root / "x"), boost::filesystem::filesystem_error);
  EXPECT_TRUE(filesystem.removeAll(root / "x"));
  EXPECT_TRUE(root.has("outside/kept"));
  EXPECT_FALSE(filesystem.removeAll(root / "x"));
  EXPECT_FALSE(filesystem.remove(root / "x"));
  EXPECT_FALSE(filesystem.exists(root / "x"));
  EXPECT_TRUE(filesystem.remove(root / "outside/kept"));
  EXPECT_EQ(0u, filesystem.getSize(root / "outside"));
  root.write("sparse/large", "");
  std::filesystem::resize_file(root / "sparse/large", 5'000'000'000);
  EXPECT_EQ(5'000'000'000u, filesystem.getSize(root / "sparse"));
}

TEST(FilesystemOperations, saysWhatItCouldNotIterateOver) {
  const TemporaryDirectory root;
  root.write("file", "");
  FilesystemOperations filesystem;
  EXPECT_EQ("Could not iterate over '" + (root / "gone") + "' with error No such file or directory",
            errorOf([&] { filesystem.getSize(root / "gone"); }));
  EXPECT_EQ("Could not iterate over '" + (root / "file") + "' with error Not a directory",
            errorOf([&] { filesystem.listDirectory(root / "file"); }));
}

TEST(FileIO, readsBackWhatItWroteAndMoves) {
  const TemporaryDirectory root;
  FileIO io;
  for (const std::size_t size : {0u, 1u, 2u, 4095u, 4096u, 4097u, 1'000'000u}) {
    std::string content(size, 'x');
    if (size > 0) {
      content[size / 2] = '\0';
    }
    io.writeFile(root / "file", content);
    EXPECT_EQ(content, io.readFile(root / "file"));
  }
  io.writeFile(root / "other", "short");
  io.moveFile(root / "other", root / "file");
  EXPECT_EQ("short", io.readFile(root / "file"));
  EXPECT_THROW(io.moveFile(root / "other", root / "file"), boost::filesystem::filesystem_error);
  EXPECT_FALSE(io.readFile("/proc/self/maps").empty()) << "a file that reports no size";
}

TEST(FileIO, hasOneMessageForEveryFailure) {
  const TemporaryDirectory root;
  FileIO io;
  const std::string message = "Could not open file.";
  const int nextDescriptor = ::dup(0);
  ::close(nextDescriptor);
  EXPECT_EQ(message, errorOf([&] { io.readFile(root / "gone"); }));
  EXPECT_EQ(message, errorOf([&] { io.readFile(root.path()); }));
#ifndef __SANITIZE_ADDRESS__  // Which ends the program when there is no memory.
  const int huge = ::memfd_create("huge", 0);
  EXPECT_EQ(0, ::ftruncate(huge, std::numeric_limits<off_t>::max() / 4));
  EXPECT_EQ(message, errorOf([&] { io.readFile("/proc/self/fd/" + std::to_string(huge)); }));
  ::close(huge);
#endif
  EXPECT_EQ(message, errorOf([&] { io.writeFile(root / "gone/file", "x"); }));
  EXPECT_EQ(message, errorOf([&] { io.writeFile("/dev/full", "x"); }));
  EXPECT_NO_THROW(io.writeFile("/dev/full", ""));
  EXPECT_EQ(nextDescriptor, ::dup(0)) << "a descriptor was left open";
  ::close(nextDescriptor);
}

/// Interrupts the system calls of the thread that makes it, every half millisecond.
class Interruptions {
 public:
  Interruptions() {
    struct sigaction action = {};
    action.sa_handler = [](int) { ++count; };  // Without SA_RESTART.
    ::sigaction(SIGALRM, &action, &previous_);
    set(500);
  }
  ~Interruptions() {
    set(0);
    ::sigaction(SIGALRM, &previous_, nullptr);
  }
  static std::atomic<int> count;

 private:
  static void set(int microseconds) {
    const itimerval timer = {{0, microseconds}, {0, microseconds}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
  }
  struct sigaction previous_ = {};
};
std::atomic<int> Interruptions::count{0};

/// The slow other end of a pipe: calls `transfer` with a pause before each time, until it is done.
template <class Transfer>
std::thread slowly(const Transfer& transfer) {
  sigset_t alarm, previous;
  sigemptyset(&alarm);
  sigaddset(&alarm, SIGALRM);
  ::pthread_sigmask(SIG_BLOCK, &alarm, &previous);  // Inherited by the thread.
  std::thread thread([transfer] {
    do {
      std::this_thread::sleep_for(std::chrono::milliseconds(3));
    } while (transfer());
  });
  ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  return thread;
}

TEST(FileIO, goesOnAfterInterruptionsAndShortTransfers) {
  const TemporaryDirectory root;
  const std::string pipe = root / "pipe";
  ASSERT_EQ(0, ::mkfifo(pipe.c_str(), 0600));
  std::string content;
  for (int i = 0; i < 300'000; ++i) {
    content += static_cast<char>(i * 31);
  }
  FileIO io;
  std::string received;
  const int both = ::open(pipe.c_str(), O_RDWR);  // So that no other opening waits.
  std::thread reader = slowly([&] {
    char buffer[30'000];
    const ssize_t count = ::read(both, buffer, sizeof buffer);
    received.append(buffer, static_cast<std::size_t>(count));
    return received.size() < content.size();
  });
  {
    const Interruptions interruptions;
    io.writeFile(pipe, content);
  }
  reader.join();
  EXPECT_EQ(content, received);
  ::close(both);
  const int duringWrite = Interruptions::count.exchange(0);
  EXPECT_GT(duringWrite, 0);

  int writing = -1;
  std::size_t written = 0;
  std::thread writer = slowly([&] {
    writing = writing >= 0 ? writing : ::open(pipe.c_str(), O_WRONLY);
    const ssize_t count = ::write(writing, &content[written], 10'000);
    written += static_cast<std::size_t>(count);
    return written < content.size() || ::close(writing) != 0;
  });
  {
    const Interruptions interruptions;
    EXPECT_EQ(content, io.readFile(pipe));
  }
  writer.join();
  EXPECT_GT(Interruptions::count, 0);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
