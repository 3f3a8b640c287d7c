#pragma once

#include <boost/json/value.hpp>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zentrel::vistabase::ardelivery {

/// A dynamic JSON value. Integers and doubles are kept apart; strings are byte strings, which need
/// not be valid UTF-8, since file names need not be.
using JsonValue = boost::json::value;

/// Reading and writing of JSON documents. All errors are std::runtime_error.
namespace json {

/// A text is no JSON document. The message names the place too.
class ParseError : public std::runtime_error {
 public:
  ParseError(const std::string& message, std::size_t place)
      : std::runtime_error(message), place_(place) {}

  /// How much of the text could be read, in bytes.
  std::size_t place() const noexcept { return place_; }

 private:
  std::size_t place_;
};

/// Parses a whole document strictly. The value lives in `storage`, which must outlive it. Throws
/// ParseError.
JsonValue parse(std::string_view text, boost::json::storage_ptr storage = {});

/// The value as compact text.
std::string write(const JsonValue& value);

/// The member of that name; throws when `object` is not an object or has no such member.
const JsonValue& member(const JsonValue& object, std::string_view name);

/// The member of that name, which must be an array.
const boost::json::array& arrayMember(const JsonValue& object, std::string_view name);

/// A string as it is, an integer in decimal, a double in the shortest text that reads back as the
/// same double, a boolean as 1 or 0. Throws for any other kind.
std::string toString(const JsonValue& value);

/// An integer as it is, a boolean as 1 or 0, a double without a fraction, a string that is wholly a
/// decimal integer. Throws for any other kind and for a number that does not fit.
std::int64_t toInt64(const JsonValue& value);

/// As `toInt64`, for a signed 32-bit integer.
std::int32_t toInt32(const JsonValue& value);

}  // namespace json
}  // namespace zentrel::vistabase::ardelivery
