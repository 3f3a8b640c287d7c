#pragma once

#include <cstdint>

namespace zentrel::vistabase::ardelivery {

/// Sums of sizes that come from a file and may be anything: they wrap around, which signed
/// arithmetic may not.
inline std::int64_t wrappingAdd(std::int64_t left, std::int64_t right) noexcept {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(left) +
                                   static_cast<std::uint64_t>(right));
}

inline std::int64_t wrappingSubtract(std::int64_t left, std::int64_t right) noexcept {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(left) -
                                   static_cast<std::uint64_t>(right));
}

}  // namespace zentrel::vistabase::ardelivery
