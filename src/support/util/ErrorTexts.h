#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zentrel::vistabase::ardelivery {

/// The messages under which an operation reports failures inside it.
struct ErrorTexts {
  std::string_view prefix;   ///< Precedes the text of a std::exception.
  std::string_view unknown;  ///< The whole message for anything else that was thrown.

  /// The message for a cause; null means anything that is not a std::exception.
  std::string operator()(const char* cause) const {
    return cause == nullptr ? std::string(unknown) : std::string(prefix) + cause;
  }
};

/// Runs `body` and replaces whatever it throws with a std::runtime_error whose text `describe` (an
/// ErrorTexts, or a similar function of the cause) returns.
template <class Describe, class Body>
auto rethrowDescribed(const Describe& describe, const Body& body) -> decltype(body()) {
  try {
    return body();
  } catch (const std::exception& error) {
    throw std::runtime_error(describe(error.what()));
  } catch (...) {
    throw std::runtime_error(describe(nullptr));
  }
}

}  // namespace zentrel::vistabase::ardelivery
