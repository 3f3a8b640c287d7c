// Every operation, with a fault in its first call of the storage, then in its second, and so on.
#include <gmock/gmock.h>

#include "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging.h"
#include "delivery/FileCache/createFileCache.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"
#include "delivery/ModelCache/VersionedModelCacheImpl.h"
#include "tests/cpp/FileCacheCalls.h"
#include "tests/cpp/ObservedStorage.h"
#include "tests/cpp/SoftErrorRecorder.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

std::ptrdiff_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

/// A root with a few entries, and the cache over it. Committing "k" evicts "victim"; no operation
/// has any business with "a" and "dir".
struct FailingCache {
  FailingCache() {
    root.write("metadata.json", R"({"entries":[{"key":"k","size":1,"lastAccess":3},)"
                                R"({"key":"a","size":3,"lastAccess":4},)"
                                R"({"key":"victim","size":90,"lastAccess":1},)"
                                R"({"key":"dir","size":4,"lastAccess":5}]})");
    root.write("k", std::string(150, 'k'));
    root.write("a", "aaa");
    root.write("victim", "v");
    root.write("dir/sub/file", "dddd");
    root.write("extra/a", "extra of a");
    root.write("extra/k", "extra of k");
    root.write("versioned_index", R"({"versions":[{"version":1,"models":[)"
                                  R"({"type":"t","cacheKey":"a"},{"type":"u","cacheKey":"k"}]},)"
                                  R"({"version":2,"models":[{"type":"t","cacheKey":"a"}]}]})");
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
  Observer observer{root.path()};
  std::shared_ptr<IFileCache> cache =
      std::make_shared<FileCacheWithErrorLogging>(observedCache(root.path(), 200, observer));
};

/// Runs `operation` with one fault, and with faults from one call on, until it passes without any.
/// `check` is told how many there were.
template <class Operation, class Check>
void failEachCall(const Operation& operation, const Check& check) {
  for (const bool fromThereOn : {false, true}) {
    int fired = 1;
    for (int failing = 1; fired > 0; ++failing) {
      SCOPED_TRACE(failing);
      FailingCache faulty;
      fired = 0;
      faulty.observer.hook = [&, call = 0](auto&) mutable {
        if (++call == failing || (fromThereOn && call > failing)) {
          ++fired;
          throw std::runtime_error("injected");
        }
      };
      const SoftErrorRecorder recorder;
      const std::ptrdiff_t descriptors = openDescriptors();
      const bool failed = operation(faulty);
      EXPECT_EQ(descriptors, openDescriptors());
      EXPECT_TRUE(fired > 0 || failing > 1) << "no fault was injected at all";
      if (fired > 0) {
        check(faulty, failed, fired, static_cast<int>(recorder.records().size()));
        faulty.expectNothingLost();
      }
    }
  }
}

TEST(FailingStorage, leavesTheFileCacheWithOneReportANeutralResultAndEveryOtherEntry) {
  for (const FileCacheCall& operation : kFileCacheCalls) {
    if (operation.label == "flush") {
      continue;  // Calls nothing.
    }
    SCOPED_TRACE(operation.signature);
    failEachCall([&operation](FailingCache& faulty) { return operation.call(*faulty.cache, "k"); },
                 [](FailingCache&, bool neutral, int fired, int reports) {
                   EXPECT_TRUE(neutral);
                   EXPECT_EQ(1, fired);
                   EXPECT_EQ(1, reports);
                 });
  }
}

TEST(FailingStorage, leavesTheVersionedCacheWithAnExceptionOrAnIncompleteAnswer) {
  const std::function<void(VersionedModelCacheImpl&)> operations[] = {
      [](auto& versions) {
        versions.addModelIfInCache(1, {"t", "k"});
      },
      [](auto& versions) { versions.queryEntries(1); },
      [](auto& versions) { versions.queryVersions(); },
      [](auto& versions) { versions.deleteVersion(1); },
  };
  const auto types =
      std::make_shared<CapabilityModelTypeSerializer>(ModelTypeNames{{0, "t"}, {1, "u"}});
  for (const auto& operation : operations) {
    failEachCall(
        [&](FailingCache& faulty) {
          VersionedModelCacheImpl versions(std::make_unique<ObservedFileIO>(faulty.observer),
                                           std::make_unique<CacheDescriptorSerializer>(),
                                           faulty.cache, types);
          try {
            operation(versions);
            return false;
          } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), testing::StartsWith("Could not "));
            return true;
          }
        },
        [](FailingCache& faulty, bool thrown, int fired, int reports) {
          const std::string index = faulty.root.read("versioned_index");
          CacheDescriptorSerializer().deserialize(index);
          EXPECT_TRUE(index.find(R"({"version":2,)") != std::string::npos ||
                      (!thrown && reports > 0))
              << "only a reported failure to look the index up may start a new one";
          // What fails below the file cache is reported; what fails in the index is thrown.
          EXPECT_TRUE(thrown || reports > 0);
          EXPECT_LE(reports, fired);
        });
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
