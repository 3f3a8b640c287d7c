#include <gmock/gmock.h>

#include <iostream>

#include "delivery/FileCache/CacheEvictor.h"
#include "delivery/FileCache/CacheMetadataFilesystemSynchronizer.h"
#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/FileCache/FileCacheImpl.h"
#include "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging.h"
#include "delivery/FileCache/createFileCache.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"
#include "delivery/ModelCache/VersionedModelCacheImpl.h"
#include "tests/cpp/FaultyStorage.h"
#include "tests/cpp/Operations.h"
#include "tests/cpp/SoftErrorRecorder.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::StartsWith;

const std::string kIndex =
    R"({"versions":[{"version":1,"models":[{"type":"t","cacheKey":"a"},{"type":"u","cacheKey":"k"}]},)"
    R"({"version":2,"models":[{"type":"t","cacheKey":"a"}]}]})";

std::ptrdiff_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

/// A root with a few entries, and the cache over it that fails as planned. Committing "k" evicts
/// "victim"; no operation has any business with "a" and "dir".
struct FaultyCache {
  FaultyCache() {
    root.write("metadata.json", R"({"entries":[{"key":"k","size":1,"lastAccess":3},)"
                                R"({"key":"a","size":3,"lastAccess":4},)"
                                R"({"key":"victim","size":90,"lastAccess":1},)"
                                R"({"key":"dir","size":4,"lastAccess":5}]})");
    root.write("k", "12");
    root.write("a", "aaa");
    root.write("victim", "v");
    root.write("dir/sub/file", "dddd");
    root.write("extra/a", "extra of a");
    root.write("extra/k", "extra of k");
    root.write("versioned_index", kIndex);
    auto filesystem = quovix::make_shared_ref<FaultyFilesystem>(plan);
    cache = std::make_shared<FileCacheWithErrorLogging>(std::make_shared<FileCacheImpl>(
        root.path(), std::make_unique<FaultyFileIO>(plan),
        std::make_unique<CacheMetadataSerializer>(),
        std::make_unique<CacheMetadataFilesystemSynchronizer>(filesystem), filesystem,
        std::make_unique<CacheEvictor>(200)));
  }

  void expectNothingLost() {
    EXPECT_EQ("aaa", root.read("a"));
    EXPECT_EQ("dddd", root.read("dir/sub/file"));
    EXPECT_EQ("extra of a", root.read("extra/a"));
    const SoftErrorRecorder recorder;
    const auto again = createFileCache(root.path(), 1000);
    EXPECT_NE(nullptr, again->getCacheEntry("a"));
    EXPECT_NE(nullptr, again->insertAndLock("new"));
    EXPECT_EQ(IFileCache::MemContainsStatus::Present, again->memContains("dir"));
    EXPECT_TRUE(recorder.records().empty());
  }

  TemporaryDirectory root;
  FaultPlan plan;
  std::shared_ptr<IFileCache> cache;
};

int injected = 0;

/// Runs `operation` with a fault in its first call of the storage, then in its second, and so on,
/// until it passes without one. `check` is told about each fault.
template <class Operation, class Check>
void failEachCall(const Operation& operation, const Check& check) {
  for (const bool fromThereOn : {false, true}) {
    for (int call = 1;; ++call) {
      SCOPED_TRACE(call);
      FaultyCache faulty;
      const SoftErrorRecorder recorder;
      const std::ptrdiff_t descriptors = openDescriptors();
      faulty.plan = {call, fromThereOn, 0};
      const bool neutral = operation(faulty);
      faulty.plan.callsLeft = 0;
      faulty.plan.fromThereOn = false;
      EXPECT_EQ(descriptors, openDescriptors());
      if (faulty.plan.fired == 0) {
        EXPECT_GT(call, 1) << "no fault was injected at all";
        break;
      }
      ++injected;
      check(faulty, neutral, faulty.plan.fired, recorder.records().size());
      faulty.expectNothingLost();
    }
  }
}

TEST(Faults, leaveTheFileCacheWithOneReportANeutralResultAndEveryOtherEntry) {
  for (const Operation& operation : kOperations) {
    if (operation.label == "flush") {
      continue;  // Calls nothing.
    }
    SCOPED_TRACE(operation.signature);
    failEachCall(
        [&operation](FaultyCache& faulty) {
          if (operation.signature == "commit(const std::string &)") {
            faulty.root.write("k", std::string(150, 'x'));
          }
          return operation.call(*faulty.cache, "k");
        },
        [](FaultyCache&, bool neutral, int fired, std::size_t reports) {
          EXPECT_TRUE(neutral);
          EXPECT_EQ(1, fired);
          EXPECT_EQ(1u, reports);
        });
  }
  std::cout << "faults injected so far: " << injected << "\n";
}

TEST(Faults, leaveTheVersionedCacheWithAnExceptionOrAnIncompleteAnswer) {
  const std::function<bool(VersionedModelCacheImpl&)> operations[] = {
      [](auto& versions) {
        return versions.addModelIfInCache(1, {"t", "k"});
      },
      [](auto& versions) { return versions.queryEntries(1).size() == 2; },
      [](auto& versions) { return versions.queryVersions().size() == 2; },
      [](auto& versions) { return versions.deleteVersion(1), true; },
  };
  for (const auto& operation : operations) {
    failEachCall(
        [&operation](FaultyCache& faulty) {
          VersionedModelCacheImpl versions(
              std::make_unique<FaultyFileIO>(faulty.plan),
              std::make_unique<CacheDescriptorSerializer>(), faulty.cache,
              std::make_shared<CapabilityModelTypeSerializer>(ModelTypeNames{{0, "t"}, {1, "u"}}));
          try {
            operation(versions);
            return false;
          } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), StartsWith("Could not "));
            return true;
          }
        },
        [](FaultyCache& faulty, bool thrown, int fired, std::size_t reports) {
          const std::string index = faulty.root.read("versioned_index");
          CacheDescriptorSerializer().deserialize(index);
          EXPECT_TRUE(index.find(R"({"version":2,)") != std::string::npos ||
                      (!thrown && reports > 0))
              << "only a reported failure to look the index up may start a new one";
          // What fails below the file cache is reported; what fails in the index is thrown.
          EXPECT_TRUE(thrown || reports > 0);
          EXPECT_LE(reports, static_cast<std::size_t>(fired));
        });
  }
  std::cout << "faults injected so far: " << injected << "\n";
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
