// Stores in a child process, which holds their roots until it is killed.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/FileCache/recoverMetadata.h"
#include "store/FileStore.h"
#include "store/PosixDisk.h"
#include "tests/cpp/Seed.h"
#include "tests/cpp/TemporaryDirectory.h"
#include "tests/store/Samples.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;

constexpr int kKills = 10;
constexpr int kKeys = 3;

std::string keyOf(int generation) {
  return "key" + std::to_string(generation % kKeys);
}

std::string contentOf(int generation) {
  return std::to_string(generation) + std::string(static_cast<std::size_t>(generation), 'x');
}

/// A process that writes a version, an entry and a raw entry of each generation, until killed.
class Child {
 public:
  Child(const TemporaryDirectory& root, int generation) {
    boost::filesystem::create_directories(root / "raw");
    EXPECT_EQ(0, ::pipe(channel_));
    process = ::fork();
    if (process == 0) {
      live(root, generation);
    }
    ::close(channel_[1]);
  }
  ~Child() {
    ::kill(process, SIGKILL);
    int status = 0;
    ::waitpid(process, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the child saw a failure";
    ::close(channel_[0]);
  }

  /// Reads twice the generation that it begins, plus one when done. Returns false once it is dead.
  bool hear(int& progress) const {
    return ::read(channel_[0], &progress, sizeof progress) == sizeof progress;
  }

  pid_t process = 0;

 private:
  [[noreturn]] void live(const TemporaryDirectory& root, int generation) const noexcept {
    softerror::setSink({[](const softerror::Report&, void*) { ::_exit(1); }});
    const auto models = ModelStore::open(root / "models", kCapability, kTwoVersions);
    const auto files = FileStore::open(root / "files", 1 << 20);
    const auto raw = createFileCache(root / "raw", 1 << 20);
    const auto tell = [this](int progress) {
      return ::write(channel_[1], &progress, sizeof progress);
    };
    for (;; ++generation) {
      tell(2 * generation);
      put(*files->write(keyOf(generation)), contentOf(generation));
      raw->insertAndLock(keyOf(generation));
      root.write("raw/" + keyOf(generation), contentOf(generation));
      raw->commit(keyOf(generation));
      update(*models, generation);
      tell(2 * generation + 1);
    }
  }

  int channel_[2] = {};
};

TEST(Processes, loseNothingThatWasCommittedWhenTheyAreKilled) {
  const SoftErrors softErrors;
  const TemporaryDirectory root;
  const unsigned seed = givenOrNewSeed();
  SCOPED_TRACE("MODELCACHE_SEED=" + std::to_string(seed));
  std::mt19937 random(seed);
  int progress = 1;
  for (int kill = 0; kill < kKills && !HasFailure(); ++kill) {
    {
      const Child child(root, (progress + 1) / 2);
      for (std::size_t told = random() % 8 + 2; told > 0 && child.hear(progress); --told) {
      }
      ::usleep(static_cast<useconds_t>(random() % 3000));
      ::kill(child.process, SIGKILL);
      while (child.hear(progress)) {
      }
    }
    const int begun = progress / 2, done = (progress - 1) / 2;
    const auto models = ModelStore::open(root / "models", kCapability, kTwoVersions);
    const int active = models->snapshot()->active.value_or(0);
    EXPECT_TRUE(active == begun || active == done) << active << " of " << begun;
    EXPECT_TRUE(models->verify().empty());
    const auto files = FileStore::open(root / "files", 1 << 20);
    recoverMetadata(root / "raw");
    const auto raw = createFileCache(root / "raw", 1 << 20);
    for (int generation = std::max(1, begun - kKeys + 1); generation <= done; ++generation) {
      EXPECT_NE(std::nullopt, files->get(keyOf(generation)));
      EXPECT_EQ(contentOf(generation), root.read("files/" + keyOf(generation)));
      EXPECT_NE(nullptr, raw->getCacheEntry(keyOf(generation)));
      EXPECT_EQ(contentOf(generation), root.read("raw/" + keyOf(generation)));
    }
  }
}

TEST(Processes, keepTheirRootWhenAForkedOneDropsItsCopies) {
  const TemporaryDirectory root;
  auto store = FileStore::open(root.path(), 1);
  auto out = store->write("key");
  if (::fork() == 0) {
    out.reset();
    store.reset();
    ::_exit(0);
  }
  ::wait(nullptr);
  const auto directory = openPosixDirectory(root.path());
  EXPECT_NE(std::nullopt, findHolder(*directory));
  put(*out, "1");
  store.reset();
  EXPECT_EQ(std::nullopt, findHolder(*directory));
  FileStore::open(root.path(), 1);  // Nor has the search kept the lock.
}

TEST(Processes, areToldWhoHasTheRoot) {
  const TemporaryDirectory root;
  const auto expectRefusal = [&](const std::string& holder) {
    const auto before = openDescriptors();
    const StoreError error = errorOf([&] { FileStore::open(root / "files", 1); });
    EXPECT_EQ(before, openDescriptors());
    EXPECT_EQ(StoreError::Reason::InUse, error.reason());
    EXPECT_THAT(error.what(), testing::HasSubstr(holder));
  };
  {
    const Child child(root, 1);
    int progress = 0;
    child.hear(progress);
    expectRefusal("the process " + std::to_string(child.process) + " (");
  }
  const auto store = FileStore::open(root / "files", 1);
  expectRefusal("this process already, opened by the thread");
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
