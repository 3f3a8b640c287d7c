#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <random>
#include <thread>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/FileCache/recoverMetadata.h"
#include "delivery/ModelCache/SegmentationModelCache.h"
#include "tests/cpp/Seed.h"
#include "tests/cpp/SoftErrorRecorder.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

constexpr int kKills = 400;
constexpr std::int64_t kBudget = 1 << 30;

struct Progress {
  int key;
  int generation;
  bool committed;
};

std::string keyOf(int key) {
  return "model-" + std::to_string(key);
}

std::string contentOf(int key, int generation) {
  return std::string(static_cast<std::size_t>(1 + generation % 5000), static_cast<char>('a' + key));
}

/// The life of a few models, over and over, until killed. Tells what it is about to do to a file
/// and what it has committed.
[[noreturn]] void liveUntilKilled(const TemporaryDirectory& root, int progress, int generation) {
  softerror::setSink([](const softerror::Report&) { ::_exit(1); });
  const auto files = createFileCache(root.path(), kBudget);
  SegmentationModelCache models(files);
  for (;; ++generation) {
    const int key = generation % 6;
    const auto tell = [&](bool committed) {
      const Progress state{key, generation, committed};
      return ::write(progress, &state, sizeof state) == sizeof state;
    };
    tell(false);
    const auto entry = files->insertAndLock(keyOf(key));
    root.write(keyOf(key), contentOf(key, generation));
    files->commit(keyOf(key));
    files->unlock(keyOf(key));
    tell(true);
    files->updateExtra(keyOf(key), BytesVector(100));
    // The versions share their files, so that trimming deletes none.
    models.addModelForVersionIfInCache(generation, {keyOf(0), "seg_init_net.pb"});
    models.addModelForVersionIfInCache(generation, {keyOf(1), "seg_predict_net.pb"});
    models.getModelPaths(generation);
    models.trimExceptVersion(generation);
  }
}

/// A root, and what the processes over it told before they were killed.
class KilledProcess : public testing::Test {
 protected:
  void SetUp() override {
    // So many that writing metadata.json takes long enough to be cut short.
    for (int i = 0; i < 300; ++i) {
      root_.write(std::string(200, 'x') + std::to_string(i), "");
    }
  }

  /// Runs a process that is killed after a few of its steps, and a little more.
  void runAndKill() {
    int channel[2];
    ASSERT_EQ(0, ::pipe(channel));
    const pid_t child = ::fork();
    if (child == 0) {
      liveUntilKilled(root_, channel[1], generation_);
    }
    ::close(channel[1]);
    for (auto steps = random_() % 4 * 2; steps-- > 0;) {
      ASSERT_TRUE(hear(channel[0]));
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random_() % 8000));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the child saw a failure";
    while (hear(channel[0])) {
    }
    ::close(channel[0]);
  }

  /// Does what an app does when it starts again.
  void recover() {
    const auto files = createFileCache(root_.path(), kBudget);
    recoverMetadata(root_.path());
    try {
      SegmentationModelCache(files).getModelPaths(generation_ - 1);
    } catch (const std::runtime_error& error) {
      ASSERT_EQ(0u, std::string(error.what()).find("Could not query entries: Deserializing fail"));
      files->remove("versioned_index");
    }
  }

  void expectCommittedEntries() {
    const auto files = createFileCache(root_.path(), kBudget);
    for (const auto& [key, progress] : last_) {
      if (progress.committed) {
        ASSERT_NE(nullptr, files->getCacheEntry(keyOf(key)));
        ASSERT_EQ(contentOf(key, progress.generation), root_.read(keyOf(key)));
        ++checked_;
      }
    }
  }

  const unsigned seed_ = givenOrNewSeed();
  int checked_ = 0;

 private:
  bool hear(int channel) {
    Progress state = {};
    if (::read(channel, &state, sizeof state) != sizeof state) {
      return false;
    }
    last_[state.key] = state;
    generation_ = state.generation + 1;
    return true;
  }

  TemporaryDirectory root_;
  std::mt19937 random_{seed_};
  std::map<int, Progress> last_;
  int generation_ = 0;
};

TEST_F(KilledProcess, losesNoCommittedEntryWheneverItHappens) {
  SCOPED_TRACE("MODELCACHE_SEED=" + std::to_string(seed_));
  const SoftErrorRecorder recorder;
  for (int kill = 0; kill < kKills; ++kill) {
    ASSERT_NO_FATAL_FAILURE(runAndKill());
    ASSERT_NO_FATAL_FAILURE(recover());
    ASSERT_NO_FATAL_FAILURE(expectCommittedEntries());
    ASSERT_TRUE(recorder.records().empty());
  }
  EXPECT_GT(checked_, kKills);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
