#include <gtest/gtest.h>

#include "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging.h"
#include "tests/cpp/FileCacheCalls.h"
#include "tests/cpp/ObservedStorage.h"
#include "tests/cpp/SoftErrorRecorder.h"

namespace zentrel::vistabase::ardelivery {
namespace {

TEST(ErrorLogging, turnsEachFailureIntoOneReportAndANeutralResult) {
  const std::string scope = " zentrel::vistabase::ardelivery::FileCacheWithErrorLogging::";
  Observer observer("/r");
  FileCacheWithErrorLogging cache(std::make_shared<ObservedFileCache>(observer, nullptr));
  for (const FileCacheCall& operation : kFileCacheCalls) {
    SCOPED_TRACE(operation.signature);
    const SoftErrorRecorder recorder;
    observer.hook = [](auto&) { throw std::runtime_error("100%s"); };
    EXPECT_TRUE(operation.call(cache, "k"));
    observer.hook = [](auto&) { throw 1; };
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
