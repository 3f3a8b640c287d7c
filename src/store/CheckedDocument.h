#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "support/json/JsonValue.h"

/// The files that a store relies on: a JSON object in one line, whose first member is "format" and
/// whose last one, "crc32", is the CRC-32 of all bytes before the comma in front of it.
namespace zentrel::vistabase::ardelivery {

/// A document of a release that is newer than this one, which is to leave it alone.
class NewerDocument : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::uint32_t crc32(std::string_view bytes);

/// The text of an object with "format" before its members and "crc32" after them.
std::string printChecked(const boost::json::object& members);

/// The object of such a text. Throws json::Error for anything else, and NewerDocument.
JsonValue parseChecked(std::string_view text);

}  // namespace zentrel::vistabase::ardelivery
