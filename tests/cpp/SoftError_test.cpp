#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/cpp/Errors.h"

namespace {

using softerror::printSoftError;
using softerror::Severity;

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

}  // namespace
