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

/// A dynamic JSON value. Integers and doubles are kept apart; strings are byte strings, which need
/// not be valid UTF-8, since file names need not be.
using JsonValue = boost::json::value;

/// Reading and writing of JSON documents. All errors are an Error.
namespace json {

/// What is wrong with a document, and where.
class Error : public std::runtime_error {
 public:
  /// `path` names a value of the document, as in "entries[3].size"; it is empty for the root.
  /// `byte` is how much could be read of a text that is no JSON.
  explicit Error(const std::string& cause, const std::string& path = {},
                 std::optional<std::size_t> byte = {})
      : std::runtime_error(path.empty() ? cause : path + ": " + cause),
        cause_(cause),
        path_(path),
        byte_(byte) {}

  /// The same error under another text.
  Error(const std::string& text, const Error& other)
      : std::runtime_error(text), cause_(other.cause_), path_(other.path_), byte_(other.byte_) {}

  const std::string& cause() const noexcept { return cause_; }
  const std::string& path() const noexcept { return path_; }
  const std::optional<std::size_t>& byte() const noexcept { return byte_; }

  /// The same error, as one of a value whose path began at `parent`.
  Error within(const std::string& parent) const {
    return Error(cause_, path_.empty() ? parent : parent + '.' + path_, byte_);
  }

 private:
  std::string cause_;
  std::string path_;
  std::optional<std::size_t> byte_;
};

/// Parses a whole document strictly.
JsonValue parse(std::string_view text);

/// The value as compact text.
std::string write(const JsonValue& value);

/// A string as it is, an integer in decimal, a double in the shortest text that reads back as the
/// same double, a boolean as 1 or 0. Throws for any other kind and for a number out of range.
std::string toString(const JsonValue& value);

/// An integer as it is, a boolean as 1 or 0, a double without a fraction, a string that is wholly a
/// decimal integer. Throws for any other kind and for a number that does not fit.
std::int64_t toInt64(const JsonValue& value);

/// As `toInt64`, for a signed 32-bit integer.
std::int32_t toInt32(const JsonValue& value);

/// The member of that name; throws when `object` is not an object or has no such member.
const JsonValue& member(const JsonValue& object, std::string_view name);

/// The same as `convert` gives it; what that throws tells which member.
template <class Convert>
auto member(const JsonValue& object, std::string_view name, const Convert& convert) {
  const JsonValue& value = member(object, name);
  try {
    return convert(value);
  } catch (const Error& error) {
    throw error.within(std::string(name));
  }
}

/// Throws unless `object` is an object that has all of these members: for a reader that looks up
/// several before it converts the first.
void requireMembers(const JsonValue& object, std::initializer_list<std::string_view> names);

/// The member of that name, which must be an array, for `forEach`. A missing one counts as null.
const boost::json::array& arrayMember(const JsonValue& object, std::string_view name);

/// Calls `read` with each element of the member of that name, which must be an array; what `read`
/// throws tells which element.
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

/// For a catch block: throws what was caught as an Error whose text quotes the whole document.
[[noreturn]] void rethrowQuoting(const std::string& text);

/// Runs `read`, which reads the document `text`, and returns its result. Whatever fails is thrown
/// as an Error whose text quotes the whole document.
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
