// Fails the first storage operation of every cache operation, then the second, and so on.
#include <gtest/gtest.h>

#include "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging.h"
#include "delivery/FileCache/createFileCache.h"
#include "tests/cpp/FileCacheCalls.h"
#include "tests/cpp/ObservedStorage.h"
#include "tests/cpp/SoftErrorRecorder.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

enum class Faults { One, OneUnknown, FromThereOn };

std::ptrdiff_t openDescriptors() {
  return std::distance(boost::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// Gives flushExtra something that can fail.
struct FlushingCache final : FileCacheImpl {
  using FileCacheImpl::FileCacheImpl;
  void flushExtra() override { getSize(); }
};

/// A cache with a few entries. Committing "k" evicts "victim"; no operation may touch "a" or "dir".
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
  }

  void expectNothingLost() {
    EXPECT_EQ("aaa", root.read("a"));
    EXPECT_EQ("dddd", root.read("dir/sub/file"));
    EXPECT_EQ("extra of a", root.read("extra/a"));
    SoftErrorRecorder recorder;
    const auto again = createFileCache(root.path(), 1000);
    EXPECT_NE(nullptr, again->getCacheEntry("a"));
    EXPECT_NE(nullptr, again->insertAndLock("new"));
    EXPECT_EQ(IFileCache::MemContainsStatus::Present, again->memContains("dir"));
    EXPECT_TRUE(recorder.take().empty());
  }

  TemporaryDirectory root;
  Hook hook = [](auto&) {};
  std::shared_ptr<IFileCache> cache = std::make_shared<FileCacheWithErrorLogging>(
      observedCache<FlushingCache>(root.path(), 200, hook));
};

/// Calls the operation with each fault in turn until none strikes.
void failEachCall(const FileCacheCall& operation, Faults faults) {
  const std::string scope = " zentrel::vistabase::ardelivery::FileCacheWithErrorLogging::";
  const std::string prefix = "Error for " + operation.label + ": ";
  const bool isUnknown = faults == Faults::OneUnknown;
  int fired = 1;
  for (int failing = 1; fired > 0; ++failing) {
    SCOPED_TRACE(failing);
    FailingCache it;
    fired = 0;
    it.hook = [&, call = 0](auto&) mutable {
      if (++call == failing || (faults == Faults::FromThereOn && call > failing)) {
        ++fired;
        isUnknown ? throw 1 : throw std::runtime_error("100%s");
      }
    };
    SoftErrorRecorder recorder;
    const std::ptrdiff_t descriptors = openDescriptors();
    const bool isNeutral = operation.call(*it.cache, "k");
    EXPECT_EQ(descriptors, openDescriptors());
    EXPECT_TRUE(fired > 0 || failing > 1) << "no fault was injected at all";
    const auto reports = recorder.take();
    ASSERT_EQ(fired > 0 ? 1u : 0u, reports.size());
    if (fired > 0) {
      EXPECT_TRUE(isNeutral);
      EXPECT_EQ("virtual " + operation.result + scope + operation.signature, reports[0].function);
      EXPECT_EQ("delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging",
                reports[0].file);
      EXPECT_EQ("1 tessel", std::to_string(reports[0].severity) + " " + reports[0].category);
      EXPECT_EQ(prefix + (isUnknown ? "unknown error" : "%s"), reports[0].format);
      EXPECT_EQ(prefix + (isUnknown ? "unknown error" : "100%s"), reports[0].message);
      it.expectNothingLost();
    }
  }
}

TEST(FailingStorage, givesANeutralResultOneReportAndLosesNoOtherEntry) {
  for (const FileCacheCall& operation : kFileCacheCalls) {
    SCOPED_TRACE(operation.signature);
    for (const Faults faults : {Faults::One, Faults::OneUnknown, Faults::FromThereOn}) {
      failEachCall(operation, faults);
    }
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
