#pragma once

#include <boost/json/monotonic_resource.hpp>
#include <string>

#include "support/json/JsonValue.h"
#include "support/util/ErrorTexts.h"

namespace zentrel::vistabase::ardelivery::json {

/// Parses `text` and returns what `read` makes of the root.
template <class Read>
auto readRoot(const std::string& text, const Read& read) {
  // A document is read once and dropped: most fit on the stack and cost no allocation.
  unsigned char buffer[16 * 1024];
  boost::json::monotonic_resource storage(buffer, sizeof buffer);
  return read(parse(text, &storage));
}

/// Runs `body`, which reads the document `text`. Whatever fails is thrown as a std::runtime_error
/// that quotes the whole text.
template <class Body>
auto deserializing(const std::string& text, const Body& body) {
  const auto describe = [&text](const char* cause) {
    const std::string failure = "Deserializing failed: '" + text + "' with ";
    return cause == nullptr ? failure + "unknown exception" : failure + "exception: " + cause;
  };
  return rethrowDescribed(describe, body);
}

}  // namespace zentrel::vistabase::ardelivery::json
