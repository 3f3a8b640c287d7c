#include "support/json/JsonValue.h"

#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is POSIX
#include <algorithm>
#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/kind.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value_stack.hpp>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <limits>

namespace zentrel::vistabase::ardelivery::json {
namespace {

constexpr const char* kScalar = "int/double/bool/string";

/// The double nearest to a JSON number, as strtod rounds it, in any locale of the process.
double nearestDouble(std::string_view number) {
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
  const locale_t previous = uselocale(plain);
  const double nearest = std::strtod(std::string(number).c_str(), nullptr);
  uselocale(previous);
  return nearest;
}

/// The parser's handler, which builds a value.
class Builder {
 public:
  static constexpr std::size_t max_object_size = boost::json::object::max_size();
  static constexpr std::size_t max_array_size = boost::json::array::max_size();
  static constexpr std::size_t max_key_size = boost::json::string::max_size();
  static constexpr std::size_t max_string_size = boost::json::string::max_size();

  using Code = boost::system::error_code;
  using Text = boost::json::string_view;

  explicit Builder(unsigned char* scratch, std::size_t size) : stack_({}, scratch, size) {
    // A document is read once and dropped. Allocating its values from a few blocks saves a fifth
    // (of a small index) to a third of the instructions that reading takes.
    constexpr std::size_t block = 8192;
    stack_.reset(boost::json::make_shared_resource<boost::json::monotonic_resource>(block));
  }

  JsonValue release() { return stack_.release(); }

  static bool on_document_begin(Code&) { return true; }
  static bool on_document_end(Code&) { return true; }
  static bool on_object_begin(Code&) { return true; }
  bool on_object_end(std::size_t count, Code&) { return stack_.push_object(count), true; }
  static bool on_array_begin(Code&) { return true; }
  bool on_array_end(std::size_t count, Code&) { return stack_.push_array(count), true; }
  bool on_key_part(Text part, std::size_t, Code&) { return stack_.push_chars(part), true; }
  bool on_key(Text rest, std::size_t, Code&) { return stack_.push_key(rest), true; }
  bool on_string_part(Text part, std::size_t, Code&) { return stack_.push_chars(part), true; }
  bool on_string(Text rest, std::size_t, Code&) { return stack_.push_string(rest), true; }
  static bool on_number_part(Text, Code&) { return true; }
  bool on_int64(std::int64_t number, Text, Code&) { return stack_.push_int64(number), true; }
  bool on_uint64(std::uint64_t, Text, Code&) { return stack_.push_double(kOutOfRange), true; }
  bool on_bool(bool value, Code&) { return stack_.push_bool(value), true; }
  bool on_null(Code&) { return stack_.push_null(), true; }
  static bool on_comment_part(Text, Code&) { return true; }
  static bool on_comment(Text, Code&) { return true; }

  bool on_double(double, Text text, Code&) {
    // The parser's own double may be off by one bit, and it rounds integers that are too large. The
    // text is complete, since it comes from one buffer.
    const bool isInteger = text.find_first_of(".eE") == Text::npos;
    return stack_.push_double(isInteger ? kOutOfRange : nearestDouble(text)), true;
  }

 private:
  // A value that no JSON text has. Converting it fails; in a member that nobody reads it is
  // harmless.
  static constexpr double kOutOfRange = std::numeric_limits<double>::quiet_NaN();

  boost::json::value_stack stack_;
};

Error typeError(const char* expected, const JsonValue& value) {
  return Error(std::string("type error: expected ") + expected + ", found " +
               std::string(boost::json::to_string(value.kind())));
}

[[noreturn]] void throwConversionError(const std::string& text, const char* target) {
  throw Error("conversion error: " + text + " is not a " + target);
}

/// The shortest text that reads back as the same value, with an exponent where that is shorter.
/// Not std::to_chars, whose tables for doubles would make up a fifth of the library that apps ship.
std::string toDecimal(double number) {
  std::string text = boost::json::serialize(JsonValue(number));  // Such as -1.25E-3.
  const std::size_t mark = text.find('E');
  if (mark == std::string::npos) {
    return text;
  }
  const int exponent = std::stoi(text.substr(mark + 1));
  const std::string sign(text[0] == '-' ? 1 : 0, '-');
  std::string scientific = text.substr(sign.size(), mark - sign.size());
  std::string fixed =
      scientific.substr(0, 1) + scientific.substr(std::min<std::size_t>(2, scientific.size()));
  if (exponent < 0) {
    fixed.insert(0, "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0'));
  } else if (const auto whole = static_cast<std::size_t>(exponent) + 1; whole < fixed.size()) {
    fixed.insert(whole, ".");
  } else if (constexpr double limit = 18446744073709551616.0; std::fabs(number) < limit) {
    fixed =
        std::to_string(static_cast<std::uint64_t>(std::fabs(number)));  // All digits from 2^53 on.
  } else {
    fixed.resize(whole, '0');
  }
  scientific += exponent < 0 ? "e-" : "e+";
  scientific += (std::abs(exponent) < 10 ? "0" : "") + std::to_string(std::abs(exponent));
  return sign + (fixed.size() <= scientific.size() ? fixed : scientific);
}

/// Returns null if there is no such member.
const JsonValue* find(const JsonValue& object, std::string_view name) {
  if (!object.is_object()) {
    throw typeError("object", object);
  }
  return object.get_object().if_contains(name);
}

double requireInRange(double number) {
  if (!std::isfinite(number)) {
    throw Error("conversion error: a number out of range");
  }
  return number;
}

std::int64_t toInt64(double number) {
  constexpr double limit = 9223372036854775808.0;  // 2^63
  if (!(number >= -limit && number < limit) || std::trunc(number) != number) {
    throwConversionError(toDecimal(requireInRange(number)), "64-bit integer");
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

JsonValue parse(std::string_view text) {
  boost::json::parse_options options;
  options.allow_invalid_utf8 = true;
  unsigned char scratch[4096];
  boost::json::basic_parser<Builder> parser(options, scratch, sizeof scratch);
  boost::system::error_code error;
  std::size_t parsed = parser.write_some(false, text.data(), text.size(), error);
  if (!error && parsed < text.size()) {
    error = boost::json::error::extra_data;
  }
  if (error) {
    // Not Boost's exception, whose text names files and functions of the build.
    throw Error("parse error: " + error.message() + " at byte " + std::to_string(parsed), {},
                parsed);
  }
  return parser.handler().release();
}

std::string write(const JsonValue& value) {
  return boost::json::serialize(value);
}

const JsonValue& member(const JsonValue& object, std::string_view name) {
  const JsonValue* const found = find(object, name);
  if (found == nullptr) {
    throw Error("missing member \"" + std::string(name) + "\"");
  }
  return *found;
}

void requireMembers(const JsonValue& object, std::initializer_list<std::string_view> names) {
  for (const std::string_view name : names) {
    member(object, name);
  }
}

const boost::json::array& arrayMember(const JsonValue& object, std::string_view name) {
  const JsonValue* const found = find(object, name);
  if (found == nullptr || !found->is_array()) {
    throw typeError("array", found == nullptr ? JsonValue() : *found).within(std::string(name));
  }
  return found->get_array();
}

std::string toString(const JsonValue& value) {
  switch (value.kind()) {
    case boost::json::kind::string:
      return {value.get_string().data(), value.get_string().size()};
    case boost::json::kind::int64:
      return std::to_string(value.get_int64());
    case boost::json::kind::double_:
      return toDecimal(requireInRange(value.get_double()));
    case boost::json::kind::bool_:
      return value.get_bool() ? "1" : "0";
    default:
      throw typeError(kScalar, value);
  }
}

std::int64_t toInt64(const JsonValue& value) {
  switch (value.kind()) {
    case boost::json::kind::string:
      return toInt64(std::string_view(value.get_string()));
    case boost::json::kind::int64:
      return value.get_int64();
    case boost::json::kind::double_:
      return toInt64(value.get_double());
    case boost::json::kind::bool_:
      return value.get_bool() ? 1 : 0;
    default:
      throw typeError(kScalar, value);
  }
}

std::int32_t toInt32(const JsonValue& value) {
  const std::int64_t number = toInt64(value);
  if (number < std::numeric_limits<std::int32_t>::min() ||
      number > std::numeric_limits<std::int32_t>::max()) {
    throwConversionError(std::to_string(number), "32-bit integer");
  }
  return static_cast<std::int32_t>(number);
}

void rethrowQuoting(const std::string& text) {
  const std::string failure = "Deserializing failed: '" + text + "' with ";
  try {
    throw;
  } catch (const Error& error) {
    throw Error(failure + "exception: " + error.what(), error);
  } catch (const std::exception& error) {
    throw Error(failure + "exception: " + error.what(), Error(error.what()));
  } catch (...) {
    throw Error(failure + "unknown exception", Error("unknown exception"));
  }
}

}  // namespace zentrel::vistabase::ardelivery::json
