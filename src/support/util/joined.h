#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace zentrel::vistabase::ardelivery {

namespace detail {

inline void append(std::string& text, std::string_view part) {
  text += part;
}

inline void append(std::string& text, std::int64_t number) {
  text += std::to_string(number);
}

}  // namespace detail

/// Concatenates strings and integers, which must fit a signed 64-bit integer.
template <class... Parts>
std::string joined(const Parts&... parts) {
  std::string text;
  const auto append = [&text](const auto& part) {
    if constexpr (std::is_integral_v<std::decay_t<decltype(part)>>) {
      detail::append(text, static_cast<std::int64_t>(part));
    } else {
      detail::append(text, part);
    }
  };
  (append(parts), ...);
  return text;
}

}  // namespace zentrel::vistabase::ardelivery
