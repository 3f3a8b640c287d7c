#include <android/log.h>

#include "platform/softerror/softerror.h"

namespace softerror {

void platformSink(const Report& report) {
  const int priority =
      report.severity == Severity::Recoverable ? ANDROID_LOG_WARN : ANDROID_LOG_ERROR;
  __android_log_print(priority, report.category, "%s (%s:%d, %s)", report.message, report.file,
                      report.line, report.function);
}

}  // namespace softerror
