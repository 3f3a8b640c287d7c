#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>

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
  int generation;
  bool committed;
};

std::string keyOf(int generation) {
  return "model-" + std::to_string(generation % 6);
}

std::string contentOf(int generation) {
  return std::to_string(generation) + std::string(static_cast<std::size_t>(generation % 5000), 'x');
}

/// The life of a few models, over and over, until killed. Tells what it is about to do to a file
/// and what it has committed.
[[noreturn]] void liveUntilKilled(const TemporaryDirectory& root, int channel, int generation) {
  softerror::setSink({[](const softerror::Report&, void*) { ::_exit(1); }});
  const auto files = createFileCache(root.path(), kBudget);
  SegmentationModelCache models(files);
  const auto tell = [channel](Progress progress) {
    return ::write(channel, &progress, sizeof progress) == sizeof progress;
  };
  for (;; ++generation) {
    const std::string key = keyOf(generation);
    tell({generation, false});
    files->insertAndLock(key);
    root.write(key, contentOf(generation));
    files->commit(key);
    files->unlock(key);
    tell({generation, true});
    files->updateExtra(key, BytesVector(100));
    // The versions share their files, so that trimming deletes none.
    models.addModelForVersionIfInCache(generation, {keyOf(0), "seg_init_net.pb"});
    models.addModelForVersionIfInCache(generation, {keyOf(1), "seg_predict_net.pb"});
    models.getModelPaths(generation);
    models.trimExceptVersion(generation);
  }
}

/// Runs a process that is killed some time after a few of its steps. Returns what it told.
std::vector<Progress> runAndKill(const TemporaryDirectory& root, int generation,
                                 std::mt19937& random) {
  int channel[2];
  EXPECT_EQ(0, ::pipe(channel));
  const pid_t child = ::fork();
  if (child == 0) {
    liveUntilKilled(root, channel[1], generation);
  }
  ::close(channel[1]);
  std::vector<Progress> told;
  const std::size_t steps = random() % 4 * 2;
  for (Progress next; ::read(channel[0], &next, sizeof next) == sizeof next;) {
    told.push_back(next);
    if (told.size() == steps + 1) {
      ::usleep(static_cast<useconds_t>(random() % 8000));
      ::kill(child, SIGKILL);
    }
  }
  ::close(channel[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the child saw a failure";
  return told;
}

/// Does what an app does when it starts again.
void recover(const std::string& root) {
  recoverMetadata(root);
  const auto files = createFileCache(root, kBudget);
  try {
    SegmentationModelCache(files).getModelPaths(1);
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(0u, std::string(error.what()).find("Could not query entries: Deserializing failed"));
    files->remove("versioned_index");
  }
}

TEST(KilledProcess, losesNoCommittedEntryWheneverItHappens) {
  const TemporaryDirectory root;
  const unsigned seed = givenOrNewSeed();
  SCOPED_TRACE("MODELCACHE_SEED=" + std::to_string(seed));
  std::mt19937 random(seed);
  // So many that writing metadata.json takes long enough to be cut short.
  for (int i = 0; i < 300; ++i) {
    root.write(std::string(200, 'x') + std::to_string(i), "");
  }
  std::map<std::string, Progress> last;
  int generation = 0, checked = 0;
  const SoftErrorRecorder recorder;
  for (int kill = 0; kill < kKills && !HasFailure(); ++kill) {
    for (const Progress& progress : runAndKill(root, generation, random)) {
      last[keyOf(progress.generation)] = progress;
      generation = progress.generation + 1;
    }
    recover(root.path());
    const auto files = createFileCache(root.path(), kBudget);
    for (const auto& [key, progress] : last) {
      if (progress.committed) {
        EXPECT_NE(nullptr, files->getCacheEntry(key));
        EXPECT_EQ(contentOf(progress.generation), root.read(key));
        ++checked;
      }
    }
    EXPECT_TRUE(recorder.records().empty());
  }
  EXPECT_GT(checked, kKills);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
