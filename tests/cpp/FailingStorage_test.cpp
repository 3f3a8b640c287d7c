// Every operation, with a fault in its first call of the storage, then in its second, and so on.
#include <gtest/gtest.h>

#include <set>

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

using Reports = std::vector<SoftErrorRecorder::Record>;

enum class Faults { One, OneUnknown, FromThereOn };

std::ptrdiff_t openDescriptors() {
  return std::distance(boost::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// Has something to flush, and so a call that can fail.
struct FlushingCache final : FileCacheImpl {
  using FileCacheImpl::FileCacheImpl;
  void flushExtra() override { getSize(); }
};

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
  std::shared_ptr<IFileCache> cache = std::make_shared<FileCacheWithErrorLogging>(
      observedCache<FlushingCache>(root.path(), 200, observer));
};

/// Calls `run` for each fault until it passes without any; its result goes to `check`.
template <class Run, class Check>
void failEachCall(Faults faults, const Run& run, const Check& check) {
  int fired = 1;
  for (int failing = 1; fired > 0; ++failing) {
    SCOPED_TRACE(failing);
    FailingCache failingCache;
    fired = 0;
    failingCache.observer.hook = [&, call = 0](auto&) mutable {
      if (++call == failing || (faults == Faults::FromThereOn && call > failing)) {
        ++fired;
        faults == Faults::OneUnknown ? throw 1 : throw std::runtime_error("100%s");
      }
    };
    const SoftErrorRecorder recorder;
    const std::ptrdiff_t descriptors = openDescriptors();
    const auto result = run(failingCache);
    EXPECT_EQ(descriptors, openDescriptors());
    EXPECT_TRUE(fired > 0 || failing > 1) << "no fault was injected at all";
    if (fired > 0) {
      check(failingCache, result, recorder.records());
      failingCache.expectNothingLost();
    }
  }
}

void expectReport(const FileCacheCall& operation, bool isUnknown, const Reports& reports) {
  const std::string scope = " zentrel::vistabase::ardelivery::FileCacheWithErrorLogging::";
  const std::string beginning = "Error for " + operation.label + ": ";
  ASSERT_EQ(1u, reports.size());
  EXPECT_EQ("virtual " + operation.result + scope + operation.signature, reports[0].function);
  EXPECT_EQ("delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging",
            reports[0].file);
  EXPECT_EQ("1 tessel", std::to_string(reports[0].severity) + " " + reports[0].category);
  EXPECT_EQ(beginning + (isUnknown ? "unknown error" : "%s"), reports[0].format);
  EXPECT_EQ(beginning + (isUnknown ? "unknown error" : "100%s"), reports[0].message);
}

TEST(FailingStorage, givesANeutralResultOneReportAndCostsNoOtherEntry) {
  for (const FileCacheCall& operation : kFileCacheCalls) {
    SCOPED_TRACE(operation.signature);
    for (const Faults faults : {Faults::One, Faults::OneUnknown, Faults::FromThereOn}) {
      failEachCall(
          faults, [&](FailingCache& it) { return operation.call(*it.cache, "k"); },
          [&](FailingCache&, bool isNeutral, const Reports& reports) {
            EXPECT_TRUE(isNeutral);
            expectReport(operation, faults == Faults::OneUnknown, reports);
          });
    }
  }
}

struct VersionedCall {
  std::function<void(VersionedModelCacheImpl&)> call;
  std::set<std::string> errors;
};

const VersionedCall kVersionedCalls[] = {
    {[](auto& versions) {
       versions.addModelIfInCache(1, {"t", "k"});
     },
     {"Could not add model into the cache: 100%s",
      "Could not add model into the cache: Could not insert the index key into the cache.",
      "Could not add mode into the cache - unknown exception"}},
    {[](auto& versions) { versions.queryEntries(1); },
     {"Could not query entries: 100%s", "Could not query entries - unknown exception"}},
    {[](auto& versions) { versions.queryVersions(); },
     {"Could not query versions: 100%s", "Could not query versions - unknown exception"}},
    {[](auto& versions) { versions.deleteVersion(1); },
     {"Could not delete version: 1 with exception: 100%s",
      "Could not delete version: 1 with exception: Could not insert the index key into the cache.",
      "Could not delete version: 1 unknown exception: "}},
};

TEST(FailingStorage, makesTheVersionedCacheThrowOrReport) {
  const auto types =
      std::make_shared<CapabilityModelTypeSerializer>(ModelTypeNames{{0, "t"}, {1, "u"}});
  for (const auto& [call, expectedErrors] : kVersionedCalls) {
    std::set<std::string> errors;
    const auto run = [&, &make = call](FailingCache& it) {
      VersionedModelCacheImpl versions(std::make_unique<ObservedFileIO>(it.observer),
                                       std::make_unique<CacheDescriptorSerializer>(), it.cache,
                                       types);
      try {
        return make(versions), std::string();
      } catch (const std::runtime_error& error) {
        it.observer.hook = [](auto&) {};
        EXPECT_NO_THROW(make(versions)) << "it tries again";
        errors.insert(error.what());
        return std::string(error.what());
      }
    };
    const auto check = [](FailingCache& it, const std::string& error, const Reports& reports) {
      const std::string index = it.root.read("versioned_index");
      CacheDescriptorSerializer().deserialize(index);
      EXPECT_TRUE(index.find(R"({"version":2,)") != std::string::npos || !reports.empty())
          << "only a reported failure to look the index up may start a new one";
      // What fails below the file cache is reported; what fails in the index is thrown.
      EXPECT_TRUE(!error.empty() || !reports.empty());
    };
    for (const Faults faults : {Faults::One, Faults::OneUnknown, Faults::FromThereOn}) {
      failEachCall(faults, run, check);
    }
    EXPECT_EQ(expectedErrors, errors);
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
