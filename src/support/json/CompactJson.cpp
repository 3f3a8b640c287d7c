#include "support/json/CompactJson.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <system_error>

namespace zentrel::vistabase::ardelivery::json {
namespace {

/// For each byte, whether it must be escaped in a string. A table, since every byte read or written
/// is looked up.
constexpr std::array<bool, 256> kEscaped = [] {
  std::array<bool, 256> escaped{};
  for (std::size_t byte = 0; byte < escaped.size(); ++byte) {
    escaped[byte] = byte < 0x20 || byte == '"' || byte == '\\';
  }
  return escaped;
}();

bool isEscaped(char character) {
  return kEscaped[static_cast<unsigned char>(character)];
}

std::size_t lengthWithoutEscapes(std::string_view text) {
  const std::string_view::const_iterator end = std::find_if(text.begin(), text.end(), isEscaped);
  return static_cast<std::size_t>(end - text.begin());
}

void appendEscaped(std::string& text, char character) {
  constexpr std::string_view characters = "\"\\\b\f\n\r\t";
  constexpr std::string_view letters = "\"\\bfnrt";
  constexpr std::string_view digits = "0123456789abcdef";
  text += '\\';
  const std::size_t index = characters.find(character);
  if (index != std::string_view::npos) {
    text += letters[index];
    return;
  }
  const auto code = static_cast<unsigned char>(character);
  text.append("u00").append(1, digits[code >> 4]).append(1, digits[code & 0xF]);
}

}  // namespace

void appendString(std::string& text, std::string_view value) {
  text += '"';
  for (std::string_view rest = value; !rest.empty();) {
    const std::string_view kept = rest.substr(0, lengthWithoutEscapes(rest));
    text += kept;
    rest.remove_prefix(kept.size());
    if (!rest.empty()) {
      appendEscaped(text, rest.front());
      rest.remove_prefix(1);
    }
  }
  text += '"';
}

void appendInteger(std::string& text, std::int64_t value) {
  char digits[20];  // The longest is -9223372036854775808.
  const auto result = std::to_chars(digits, digits + sizeof digits, value);
  text.append(digits, static_cast<std::size_t>(result.ptr - digits));
}

bool CompactReader::skip(std::string_view punctuation) noexcept {
  if (rest_.substr(0, punctuation.size()) != punctuation) {
    return false;
  }
  rest_.remove_prefix(punctuation.size());
  return true;
}

bool CompactReader::readString(std::string_view& value) noexcept {
  if (!skip("\"")) {
    return false;
  }
  value = rest_.substr(0, lengthWithoutEscapes(rest_));
  rest_.remove_prefix(value.size());
  return skip("\"");
}

bool CompactReader::readInteger(std::int64_t& value) noexcept {
  const char* const begin = rest_.data();
  const auto result = std::from_chars(begin, begin + rest_.size(), value);
  if (result.ec != std::errc()) {
    return false;
  }
  const std::string_view digits = rest_.substr(0, static_cast<std::size_t>(result.ptr - begin));
  rest_.remove_prefix(digits.size());
  // JSON has no leading zeros. What looks like an integer may be the beginning of a double, which
  // the caller detects from what follows.
  const std::string_view number = digits.substr(digits.front() == '-' ? 1 : 0);
  return number.size() == 1 || number.front() != '0';
}

}  // namespace zentrel::vistabase::ardelivery::json
