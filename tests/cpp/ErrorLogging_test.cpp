#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging.h"
#include "tests/cpp/Mocks.h"
#include "tests/cpp/Operations.h"
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

TEST(ErrorLogging, turnsEachFailureIntoOneReportAndANeutralResult) {
  const std::string scope = " zentrel::vistabase::ardelivery::FileCacheWithErrorLogging::";
  auto failing = std::make_shared<FailingFileCache>();
  FileCacheWithErrorLogging cache(failing);
  for (const Operation& operation : kOperations) {
    SCOPED_TRACE(operation.signature);
    const SoftErrorRecorder recorder;
    failing->fail = [] { throw std::runtime_error("100%s"); };
    EXPECT_TRUE(operation.call(cache, "k"));
    failing->fail = [] { throw 1; };
    EXPECT_TRUE(operation.call(cache, "k"));

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

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
