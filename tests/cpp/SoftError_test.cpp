#include <gtest/gtest.h>

#include "delivery/FileCache/ICacheMetadata.h"
#include "delivery/Storage/IFilesystemOperations.h"
#include "support/util/memory/shared_ref.h"
#include "support/util/memory/unique_ref.h"
#include "tests/cpp/Errors.h"

namespace {

using softerror::printSoftError;
using softerror::Severity;
using namespace zentrel::vistabase::ardelivery;

TEST(SoftError, isReportedWhateverTheArgumentsAndTheSinkDo) {
  SoftErrorRecorder recorder;
  const char* const volatile null = nullptr;
  const std::string longText(5000, 'x');
  printSoftError(null, null, 1, Severity::Recoverable, null, "%s", longText.c_str());
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
  printSoftError("f", "g", 2, Severity::Assertion, "c", null);
#pragma GCC diagnostic pop
  const auto records = recorder.take();
  ASSERT_EQ(2u, records.size());
  EXPECT_EQ(longText, records[0].message);
  EXPECT_EQ("(null)(null)(null)", records[0].file + records[0].function + records[0].category);
  EXPECT_EQ("(null)", records[1].message);

  softerror::setSink({[](const softerror::Report&, void*) { throw std::runtime_error("full"); }});
  EXPECT_NO_THROW(printSoftError("f", "g", 3, Severity::Recoverable, "c", "text"));
}

#ifndef ANDROID  // Which has a log.
TEST(SoftError, isOneLineOnStandardErrorByDefault) {
  testing::internal::CaptureStderr();
  printSoftError("file", "void f()", 7, Severity::Recoverable, "tessel", "a %s",
                 "b\nc\r\x1B[2J\x7F\u009B2Jé");
  EXPECT_EQ(
      "soft error [tessel, severity 1]: a b\\nc\\r\\x1b[2J\\x7f\\xc2\\x9b2Jé (file:7, void f())\n",
      testing::internal::GetCapturedStderr());
}
#endif

TEST(References, reportEachAccessToNullInTheSameWordsWithEveryCompiler) {
  SoftErrorRecorder recorder;
  const quovix::shared_ref<IFilesystemOperations> shared(std::shared_ptr<IFilesystemOperations>{});
  EXPECT_EQ(nullptr, shared.get());
  EXPECT_EQ(nullptr, shared.operator->());
  const quovix::unique_ref<ICacheMetadata> unique(std::unique_ptr<ICacheMetadata>{});
  EXPECT_EQ(nullptr, unique.get());

  const auto records = recorder.take();
  ASSERT_EQ(3u, records.size());
  const std::string filesystem = "zentrel::vistabase::ardelivery::IFilesystemOperations";
  EXPECT_EQ(
      "void quovix::shared_ref<" + filesystem + ">::invariant_() const [T = " + filesystem + "]",
      records[1].function);
  EXPECT_EQ("Assert triggered on line: 150, in file: support/util/memory/shared_ref",
            records[1].message);
  const std::string metadata = "zentrel::vistabase::ardelivery::ICacheMetadata";
  const std::string deleter = "std::default_delete<" + metadata + ">";
  EXPECT_EQ("void quovix::unique_ref<" + metadata + ", " + deleter +
                " >::invariant_() const [T = " + metadata + ", D = " + deleter + "]",
            records[2].function);
  EXPECT_EQ("Assert triggered on line: %d, in file: %s", records[2].format);
  EXPECT_EQ(126, records[2].line);
  EXPECT_EQ("2 AREngine", std::to_string(records[2].severity) + " " + records[2].category);
}

TEST(References, reportOnlyTheUseOfMovedFromReferences) {
  SoftErrorRecorder recorder;
  auto first = quovix::make_unique_ref<int>(1);
  auto second = std::move(first);
  EXPECT_EQ(1, *second);
  EXPECT_EQ(0u, recorder.take().size());
  EXPECT_EQ(nullptr, first.get());
  EXPECT_EQ(1u, recorder.take().size());
  second = std::move(first);
  EXPECT_EQ(1u, recorder.take().size());
}

}  // namespace
