#include "tools/inspect/Terminal.h"

#include <algorithm>
#include <cstdio>

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

/// The length of the printable UTF-8 character with which the text begins; 0 if it begins with
/// anything else.
std::size_t characterLength(std::string_view text) {
  const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byteAt(0);
  if (lead < 0x80) {
    return lead < ' ' || lead == 0x7F ? 0 : 1;
  }
  const std::size_t length = lead < 0xC2 || lead > 0xF4 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (length == 0 || length > text.size()) {
    return 0;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuationByte(text[i])) {
      return 0;
    }
  }
  const bool isControl = lead == 0xC2 && byteAt(1) < 0xA0;
  return isControl ? 0 : length;
}

/// The text with `escape` of each byte that is not part of a printable character.
template <class Escape>
std::string escaped(std::string_view text, const Escape& escape) {
  std::string result;
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    result += length == 0 ? escape(text[0]) : std::string(text.substr(0, length));
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return result;
}

const char* escapeOf(Colour colour) {
  switch (colour) {
    case Colour::Bold:
      return "\x1b[1m";
    case Colour::Dim:
      return "\x1b[2m";
    case Colour::Red:
      return "\x1b[31m";
    case Colour::Green:
      return "\x1b[32m";
    case Colour::Yellow:
      return "\x1b[33m";
    case Colour::None:
      break;
  }
  return "";
}

}  // namespace

std::size_t width(std::string_view text) {
  return text.size() -
         static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isContinuationByte));
}

std::string printable(std::string_view text) {
  return escaped(text, [](char byte) {
    char code[8];
    std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned char>(byte));
    return std::string(code);
  });
}

std::string onePrintableLine(std::string_view text) {
  return escaped(text, [](char) { return std::string("."); });
}

std::string Painter::operator()(Colour colour, const std::string& text) const {
  return enabled_ && colour != Colour::None ? escapeOf(colour) + text + "\x1b[0m" : text;
}

std::string Table::text(const Painter& paint, const std::string& indent) const {
  std::vector<std::size_t> widths(columns_.size());
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], width(row[i].text));
    }
  }
  std::string result;
  for (const auto& row : rows_) {
    std::string line = indent;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string padding(widths[i] - width(row[i].text), ' ');
      const std::string painted = paint(row[i].colour, row[i].text);
      line += (i == 0 ? "" : "  ");
      line += columns_[i] == Align::Right ? padding + painted : painted + padding;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    result += line + '\n';
  }
  return result;
}

}  // namespace zentrel::vistabase::ardelivery::inspect
