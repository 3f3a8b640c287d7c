#include "support/json/JsonValue.h"

#include <boost/json/kind.hpp>
#include <boost/json/parser.hpp>
#include <boost/json/serialize.hpp>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace zentrel::vistabase::ardelivery::json {
namespace {

constexpr const char* kScalar = "int/double/bool/string";

[[noreturn]] void throwTypeError(const char* expected, const JsonValue& value) {
  throw std::runtime_error(std::string("type error: expected ") + expected + ", found " +
                           std::string(boost::json::to_string(value.kind())));
}

[[noreturn]] void throwConversionError(const std::string& text, const char* target) {
  throw std::runtime_error("conversion error: " + text + " is not a " + target);
}

template <class Number>
std::string toDecimal(Number number) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
  return {buffer, result.ptr};
}

std::int64_t toInt64(double number) {
  // An integer just below the range has been rounded to -2^63 by the parser: it is refused too.
  constexpr double limit = 9223372036854775808.0;  // 2^63
  if (!(number > -limit && number < limit) || std::trunc(number) != number) {
    throwConversionError(toDecimal(number), "64-bit integer");
  }
  return static_cast<std::int64_t>(number);
}

std::int64_t toInt64(std::string_view text) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) {
    throwConversionError("\"" + std::string(text) + "\"", "64-bit integer");
  }
  return number;
}

}  // namespace

JsonValue parse(std::string_view text, boost::json::storage_ptr storage) {
  boost::json::parse_options options;
  options.allow_invalid_utf8 = true;
  unsigned char scratch[4096];
  boost::json::parser parser({}, options, scratch);
  parser.reset(std::move(storage));
  boost::system::error_code error;
  const std::size_t parsed = parser.write(text.data(), text.size(), error);
  if (error) {
    // The exception that the library would throw names files and functions of the build.
    throw ParseError("parse error: " + error.message() + " at byte " + std::to_string(parsed),
                     parsed);
  }
  return parser.release();
}

std::string write(const JsonValue& value) {
  return boost::json::serialize(value);
}

const JsonValue& member(const JsonValue& object, std::string_view name) {
  if (!object.is_object()) {
    throwTypeError("object", object);
  }
  const JsonValue* const found = object.get_object().if_contains(name);
  if (found == nullptr) {
    throw std::runtime_error("missing member \"" + std::string(name) + "\"");
  }
  return *found;
}

const boost::json::array& arrayMember(const JsonValue& object, std::string_view name) {
  const JsonValue& value = member(object, name);
  if (!value.is_array()) {
    throwTypeError("array", value);
  }
  return value.get_array();
}

std::string toString(const JsonValue& value) {
  switch (value.kind()) {
    case boost::json::kind::string:
      return {value.get_string().data(), value.get_string().size()};
    case boost::json::kind::int64:
      return toDecimal(value.get_int64());
    case boost::json::kind::uint64:
      throwConversionError(toDecimal(value.get_uint64()), "64-bit integer");
    case boost::json::kind::double_:
      return toDecimal(value.get_double());
    case boost::json::kind::bool_:
      return value.get_bool() ? "1" : "0";
    default:
      throwTypeError(kScalar, value);
  }
}

std::int64_t toInt64(const JsonValue& value) {
  switch (value.kind()) {
    case boost::json::kind::string:
      return toInt64(std::string_view(value.get_string()));
    case boost::json::kind::int64:
      return value.get_int64();
    case boost::json::kind::uint64:
      throwConversionError(toDecimal(value.get_uint64()), "64-bit integer");
    case boost::json::kind::double_:
      return toInt64(value.get_double());
    case boost::json::kind::bool_:
      return value.get_bool() ? 1 : 0;
    default:
      throwTypeError(kScalar, value);
  }
}

std::int32_t toInt32(const JsonValue& value) {
  const std::int64_t number = toInt64(value);
  if (number < std::numeric_limits<std::int32_t>::min() ||
      number > std::numeric_limits<std::int32_t>::max()) {
    throwConversionError(toDecimal(number), "32-bit integer");
  }
  return static_cast<std::int32_t>(number);
}

}  // namespace zentrel::vistabase::ardelivery::json
