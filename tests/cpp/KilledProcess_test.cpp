#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <map>
#include <random>
#include <thread>

#include "delivery/FileCache/createFileCache.h"
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

TEST(KilledProcess, losesNoCommittedEntryWheneverItHappens) {
  const TemporaryDirectory root;
  std::mt19937 random(announcedSeed());
  std::map<int, Progress> last;
  int generation = 0;
  int damagedMetadata = 0;
  int damagedIndexes = 0;
  int checkedEntries = 0;
  // So many that writing metadata.json takes long enough to be cut short.
  for (int i = 0; i < 300; ++i) {
    root.write(std::string(200, 'x') + std::to_string(i), "");
  }
  for (int kill = 0; kill < kKills; ++kill) {
    int channel[2];
    ASSERT_EQ(0, ::pipe(channel));
    const pid_t child = ::fork();
    if (child == 0) {
      liveUntilKilled(root, channel[1], generation);
    }
    ::close(channel[1]);
    Progress state = {};
    for (auto lives = random() % 4 * 2; lives-- > 0; last[state.key] = state) {
      ASSERT_EQ(ssize_t(sizeof state), ::read(channel[0], &state, sizeof state));
      generation = state.generation + 1;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 8000));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the child saw a failure";
    while (::read(channel[0], &state, sizeof state) == sizeof state) {
      last[state.key] = state;
      generation = state.generation + 1;
    }
    ::close(channel[0]);

    const SoftErrorRecorder recorder;
    const auto files = createFileCache(root.path(), kBudget);
    files->getSize();
    if (!recorder.records().empty()) {
      ASSERT_EQ(0u,
                recorder.records()[0].message.find("Error for getSize: Deserializing failed: '"));
      std::filesystem::rename(root / "metadata.json", root / ".metadata.json.damaged");
      ++damagedMetadata;
      recorder.records().clear();
    }
    try {
      SegmentationModelCache(files).hasModelsForVersion(generation - 1);
    } catch (const std::runtime_error& error) {
      ASSERT_EQ(0u,
                std::string(error.what()).find("Could not query entries: Deserializing failed"));
      files->remove("versioned_index");
      ++damagedIndexes;
    }
    for (const auto& [key, progress] : last) {
      if (progress.committed) {
        ASSERT_NE(nullptr, files->getCacheEntry(keyOf(key)));
        ASSERT_EQ(contentOf(key, progress.generation), root.read(keyOf(key)));
        ++checkedEntries;
      }
    }
    ASSERT_TRUE(recorder.records().empty());
  }
  EXPECT_GT(checkedEntries, kKills);
  std::cout << kKills << " kills in " << generation
            << " lives of a model; damaged: " << damagedMetadata << " metadata files, "
            << damagedIndexes << " indexes\n";
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
