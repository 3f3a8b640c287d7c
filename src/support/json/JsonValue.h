#pragma once

#include <boost/json/value.hpp>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zentrel::vistabase::ardelivery {

/// A dynamic JSON value. Integers and doubles are distinct. Strings are byte strings and need not
/// be valid UTF-8, since file names need not be.
using JsonValue = boost::json::value;

/// Reads and writes JSON documents. Every failure is an Error.
namespace json {

/// What is wrong with a document, and where.
class Error : public std::runtime_error {
 public:
  /// `path` names a value in the document, such as "entries[3].size"; empty for the root. `byte` is
  /// the offset of a syntax error.
  explicit Error(const std::string& cause, const std::string& path = {},
                 std::optional<std::size_t> byte = {})
      : std::runtime_error(path.empty() ? cause : path + ": " + cause),
        cause_(cause),
        path_(path),
        byte_(byte) {}

  /// The same error with another message.
  Error(const std::string& text, const Error& other)
      : std::runtime_error(text), cause_(other.cause_), path_(other.path_), byte_(other.byte_) {}

  const std::string& cause() const noexcept { return cause_; }
  const std::string& path() const noexcept { return path_; }
  const std::optional<std::size_t>& byte() const noexcept { return byte_; }

  /// The same error, with its path prefixed by `parent`.
  Error within(const std::string& parent) const {
    return Error(cause_, path_.empty() ? parent : parent + '.' + path_, byte_);
  }

 private:
  std::string cause_;
  std::string path_;
  std::optional<std::size_t> byte_;
};

/// Parses a complete document, strictly.
JsonValue parse(std::string_view text);

/// Prints a value compactly.
std::string write(const JsonValue& value);

/// Returns a string unchanged, an integer in decimal, a double as the shortest text that reads back
/// as the same double, a boolean as 1 or 0. Throws for any other kind, and for a number out of
/// range.
std::string toString(const JsonValue& value);

/// Converts an integer, a boolean (to 1 or 0), a double without a fraction, or a string that is a
/// decimal integer. Throws for any other kind and for a number that does not fit.
std::int64_t toInt64(const JsonValue& value);

/// Like `toInt64`, for a signed 32-bit integer.
std::int32_t toInt32(const JsonValue& value);

/// Returns the member of that name. Throws if `object` is not an object or has no such member.
const JsonValue& member(const JsonValue& object, std::string_view name);

/// The same, converted by `convert`, whose errors get the member's name in their path.
template <class Convert>
auto member(const JsonValue& object, std::string_view name, const Convert& convert) {
  const JsonValue& value = member(object, name);
  try {
    return convert(value);
  } catch (const Error& error) {
    throw error.within(std::string(name));
  }
}

/// Throws unless `object` is an object with all of these members. For readers that look up several
/// members before converting the first.
void requireMembers(const JsonValue& object, std::initializer_list<std::string_view> names);

/// Returns the member of that name, which must be an array; a missing one counts as null. For
/// `forEach`.
const boost::json::array& arrayMember(const JsonValue& object, std::string_view name);

/// Calls `read` with each element of the member of that name, which must be an array. Errors of
/// `read` get the element in their path.
template <class Read>
void forEach(const JsonValue& object, std::string_view name, const Read& read) {
  std::size_t index = 0;
  for (const JsonValue& element : arrayMember(object, name)) {
    try {
      read(element);
    } catch (const Error& error) {
      throw error.within(std::string(name) + '[' + std::to_string(index) + ']');
    }
    ++index;
  }
}

/// Call it in a catch block: rethrows as an Error whose message quotes the whole document.
[[noreturn]] void rethrowQuoting(const std::string& text);

/// Returns the result of `read`, which reads the document `text`. Any failure is thrown as an Error
/// whose message quotes the whole document.
template <class Read>
auto readDocument(const std::string& text, const Read& read) {
  try {
    return read();
  } catch (...) {
    rethrowQuoting(text);
  }
}

}  // namespace json
}  // namespace zentrel::vistabase::ardelivery
