#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "support/json/JsonValue.h"

/// The format of a store's own files: a one-line JSON object whose first member is "format" and
/// whose last, "crc32", is the CRC-32 of all bytes before the comma that precedes it.
namespace zentrel::vistabase::ardelivery {

/// The document is from a newer release, and must be left alone.
class NewerDocument : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::uint32_t crc32(std::string_view bytes);

/// Prints the object with "format" before its members and "crc32" after them.
std::string printChecked(const boost::json::object& members);

/// Parses such a document. Throws NewerDocument, and json::Error for anything else.
JsonValue parseChecked(std::string_view text);

}  // namespace zentrel::vistabase::ardelivery
