#include "support/util/memory/null_report.h"

#include "platform/softerror/softerror.h"

namespace quovix::detail {

void reportNull(const char* file, const char* function, int line) noexcept {
  softerror::printSoftError(file, function, line, softerror::Severity::Assertion, "AREngine",
                            "Assert triggered on line: %d, in file: %s", line, file);
}

}  // namespace quovix::detail
