#include "tools/inspect/Terminal.h"

#include <algorithm>
#include <cstdio>

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

constexpr unsigned kDelete = 0x7F;

bool isControl(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return code < ' ' || code == kDelete;
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
  std::string result;
  for (const char byte : text) {
    if (isControl(byte)) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned>(byte));
      result += escaped;
    } else {
      result += byte;
    }
  }
  return result;
}

std::string onePrintableLine(std::string_view text) {
  std::string result(text);
  std::replace_if(result.begin(), result.end(), isControl, '.');
  return result;
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
