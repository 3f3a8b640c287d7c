#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging.h"
#include "tests/cpp/Mocks.h"
#include "tests/cpp/SoftErrorRecorder.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Entry = std::shared_ptr<FileCacheEntry>;
using Status = IFileCache::MemContainsStatus;

struct FailingFileCache : IFileCache {
  std::function<void()> fail;

  Entry insertAndLock(const std::string&) override { return fail(), nullptr; }
  void commit(const std::string&) override { fail(); }
  void commit(const std::string&, std::int64_t) override { fail(); }
  void unlock(const std::string&) override { fail(); }
  Entry getCacheEntry(const std::string&) override { return fail(), nullptr; }
  Entry getCacheEntryWithoutPromotion(const std::string&) override { return fail(), nullptr; }
  bool updateExtra(const std::string&, BytesVector&&) override { return fail(), true; }
  Metas getAllMetas() override { return fail(), Metas(); }
  Status memContains(const std::string&) override { return fail(), Status::Present; }
  bool remove(const std::string&) override { return fail(), true; }
  std::int64_t getSize() override { return fail(), 1; }
  void clear() override { fail(); }
  void flushExtra() override { fail(); }
};

/// An operation: the beginning and the end of its signature, the name that its reports use, and a
/// call that tells whether the result was the neutral one.
struct Operation {
  std::string result, signature, label;
  std::function<bool(IFileCache&)> call;
};

const Operation kOperations[] = {
    {"std::shared_ptr<FileCacheEntry>", "insertAndLock(const std::string &)", "insertAndLock",
     [](IFileCache& cache) { return !cache.insertAndLock("k"); }},
    {"void", "commit(const std::string &)", "commit",
     [](IFileCache& cache) { return cache.commit("k"), true; }},
    {"void", "commit(const std::string &, int64_t)", "commit",
     [](IFileCache& cache) { return cache.commit("k", 1), true; }},
    {"void", "unlock(const std::string &)", "unlock",
     [](IFileCache& cache) { return cache.unlock("k"), true; }},
    {"std::shared_ptr<FileCacheEntry>", "getCacheEntry(const std::string &)", "getCacheEntry",
     [](IFileCache& cache) { return !cache.getCacheEntry("k"); }},
    {"std::shared_ptr<FileCacheEntry>", "getCacheEntryWithoutPromotion(const std::string &)",
     "getCacheEntryWithoutPromotion",
     [](IFileCache& cache) { return !cache.getCacheEntryWithoutPromotion("k"); }},
    {"bool", "updateExtra(const std::string &, zentrel::vistabase::ardelivery::BytesVector &&)",
     "updateExtra", [](IFileCache& cache) { return !cache.updateExtra("k", {}); }},
    {"std::vector<std::pair<std::string, FileCacheEntryMeta> >", "getAllMetas()", "getAllMetas",
     [](IFileCache& cache) { return cache.getAllMetas().empty(); }},
    {"IFileCache::MemContainsStatus", "memContains(const std::string &)", "memContains",
     [](IFileCache& cache) { return cache.memContains("k") == Status(2); }},
    {"bool", "remove(const std::string &)", "remove",
     [](IFileCache& cache) { return !cache.remove("k"); }},
    {"int64_t", "getSize()", "getSize", [](IFileCache& cache) { return cache.getSize() == 0; }},
    {"void", "clear()", "clear", [](IFileCache& cache) { return cache.clear(), true; }},
    {"void", "flushExtra()", "flush", [](IFileCache& cache) { return cache.flushExtra(), true; }},
};

TEST(ErrorLogging, turnsEachFailureIntoOneReportAndANeutralResult) {
  const std::string scope = " zentrel::vistabase::ardelivery::FileCacheWithErrorLogging::";
  auto failing = std::make_shared<FailingFileCache>();
  FileCacheWithErrorLogging cache(failing);
  for (const Operation& operation : kOperations) {
    SCOPED_TRACE(operation.signature);
    const SoftErrorRecorder recorder;
    failing->fail = [] { throw std::runtime_error("100%s"); };
    EXPECT_TRUE(operation.call(cache));
    failing->fail = [] { throw 1; };
    EXPECT_TRUE(operation.call(cache));

    ASSERT_EQ(2u, recorder.records().size());
    for (const auto& report : recorder.records()) {
      EXPECT_EQ("virtual " + operation.result + scope + operation.signature, report.function);
      EXPECT_EQ("delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging",
                report.file);
      EXPECT_EQ(1, report.severity);
      EXPECT_EQ("tessel", report.category);
    }
    EXPECT_EQ("Error for " + operation.label + ": %s", recorder.records()[0].format);
    EXPECT_EQ("Error for " + operation.label + ": 100%s", recorder.records()[0].message);
    EXPECT_EQ("Error for " + operation.label + ": unknown error", recorder.records()[1].format);
  }
}

TEST(ErrorLogging, passesArgumentsAndResultsThrough) {
  using testing::Return;
  const SoftErrorRecorder recorder;
  auto mock = std::make_shared<testing::StrictMock<MockFileCache>>();
  FileCacheWithErrorLogging cache(mock);
  const auto entry = std::make_shared<FileCacheEntry>(FileCacheEntry{"/p"});
  EXPECT_CALL(*mock, insertAndLock("a")).WillOnce(Return(entry));
  EXPECT_CALL(*mock, commit("b", 7));
  EXPECT_CALL(*mock, updateExtra("c", BytesVector{1, 2})).WillOnce(Return(true));
  EXPECT_CALL(*mock, getCacheEntry("d")).WillOnce(Return(nullptr));
  EXPECT_CALL(*mock, memContains("e")).WillOnce(Return(Status::Absent));
  EXPECT_EQ(entry, cache.insertAndLock("a"));
  cache.commit("b", 7);
  EXPECT_TRUE(cache.updateExtra("c", {1, 2}));
  EXPECT_EQ(nullptr, cache.getCacheEntry("d"));
  EXPECT_EQ(Status::Absent, cache.memContains("e"));
  EXPECT_TRUE(recorder.records().empty());
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
