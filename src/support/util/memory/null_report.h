#pragma once

#include <string>

namespace quovix::detail {

/// Reports a non-null reference that holds null as a soft error of severity 2. `file` and `line`
/// identify the check; they are constants, so that reports from all builds of an app can be counted
/// together.
void reportNull(const char* file, const char* function, int line) noexcept;

/// The same, with the text that `describe` returns, or none if out of memory.
template <class Describe>
void reportNull(const char* file, const Describe& describe, int line) noexcept {
  try {
    const std::string function = describe();
    reportNull(file, function.c_str(), line);
  } catch (...) {
    reportNull(file, "", line);
  }
}

}  // namespace quovix::detail
