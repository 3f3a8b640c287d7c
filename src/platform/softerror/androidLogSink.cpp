#include <android/log.h>

#include <string>

#include "platform/softerror/softerror.h"

namespace softerror {
namespace {

/// The log truncates entries at about 4,000 bytes. A message that quotes a whole file has its cause
/// at the end, so the middle is dropped.
std::string shortened(std::string message) {
  constexpr std::size_t kept = 1500;
  if (message.size() > 2 * kept) {
    message.replace(kept, message.size() - 2 * kept, " [...] ");
  }
  return message;
}

}  // namespace

void platformSink(const Report& report, void* /*userData*/) {
  const int priority =
      report.severity == Severity::Recoverable ? ANDROID_LOG_WARN : ANDROID_LOG_ERROR;
  const std::string line = std::string(report.file) + ":" + std::to_string(report.line) + ", " +
                           report.function + ": " + shortened(report.message);
  // Not __android_log_print, whose buffer is even smaller.
  __android_log_write(priority, report.category, line.c_str());
}

}  // namespace softerror
