#pragma once

#include <string>

namespace quovix::detail {

/// Reports a non-null reference that holds null as a soft error of severity 2. Never throws.
/// `file` and `line` name the check; they are fixed texts, so that reports from all builds of an
/// app can be counted together.
void reportNull(const char* file, const std::string& function, int line) noexcept;

}  // namespace quovix::detail
