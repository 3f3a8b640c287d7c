#include "tools/inspect/Terminal.h"

#include <wchar.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "support/util/Utf.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kNarrowest = 8;
constexpr const char* kEscapes[] = {"", "\x1b[1m", "\x1b[2m", "\x1b[31m", "\x1b[32m", "\x1b[33m"};

bool isObeyed(char32_t character) {
  constexpr struct {
    char32_t first, last;
  } ranges[] = {{0, 0x1F},        {0x7F, 0x9F},     {0x61C, 0x61C},  {0x200E, 0x200F},
                {0x2028, 0x202E}, {0x2066, 0x2069}, {0xFFF9, 0xFFFB}};
  return std::any_of(std::begin(ranges), std::end(ranges), [character](const auto& range) {
    return character >= range.first && character <= range.last;
  });
}

/// The end of the character at `begin`, and the columns that it takes.
std::size_t next(std::string_view text, std::size_t begin, std::size_t& width) {
  const char32_t character = decodeUtf8(text, begin).value_or(U'?');
  width = static_cast<std::size_t>(std::max(::wcwidth(static_cast<wchar_t>(character)), 0));
  return begin;
}

}  // namespace

std::string toUtf8(std::string_view bytes, bool isForTerminal,
                   const std::function<std::string(std::string_view)>& replace) {
  std::string text;
  for (std::size_t begin = 0, end = 0; begin < bytes.size(); begin = end) {
    const auto character = decodeUtf8(bytes, end);
    const bool isText = character && (*character < 0xD800 || *character > 0xDFFF) &&
                        !(isForTerminal && isObeyed(*character));
    const std::string_view run = bytes.substr(begin, end - begin);
    text += isText ? std::string(run) : replace(run);
  }
  return text;
}

std::string printable(std::string_view bytes) {
  return toUtf8(bytes, true, [](std::string_view run) {
    std::string text;
    for (const char byte : run) {
      char code[8];
      std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned char>(byte));
      text += code;
    }
    return text;
  });
}

std::size_t columns(std::string_view text) {
  std::size_t sum = 0;
  for (std::size_t at = 0, width = 0; at < text.size(); sum += width) {
    at = next(text, at, width);
  }
  return sum;
}

std::string cut(const std::string& text, std::size_t width) {
  constexpr std::size_t mark = 3;
  const std::size_t whole = columns(text);
  if (whole <= width) {
    return text;
  }
  const std::size_t kept = width - std::min(width, mark);
  std::size_t at = 0;
  std::size_t before = 0;  // Columns.
  std::size_t wide = 0;
  for (std::size_t end = next(text, 0, wide); before + wide <= (kept + 1) / 2;) {
    before += wide;
    at = end;
    end = next(text, at, wide);
  }
  const std::string left = text.substr(0, at);
  for (; whole - before > kept / 2; before += wide) {
    at = next(text, at, wide);
  }
  return left + "..." + text.substr(at);
}

std::string wrapped(const std::string& text, std::size_t width, std::size_t indent) {
  std::string result;
  std::size_t taken = 0;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find(' ', begin), text.size());
    const std::string word = cut(text.substr(begin, end - begin), width - std::min(width, indent));
    const std::size_t length = columns(word);
    if (taken > indent && taken + 1 + length > width) {
      result += '\n' + std::string(indent, ' ');
      taken = indent;
    } else if (begin > 0) {
      result += ' ';
      ++taken;
    }
    result += word;
    taken += length;
    begin = end + 1;
  }
  return result;
}

std::string Painter::operator()(Colour colour, const std::string& text) const {
  return enabled_ && colour != Colour::None
             ? kEscapes[static_cast<std::size_t>(colour)] + text + "\x1b[0m"
             : text;
}

std::vector<std::size_t> Table::widths(std::size_t total) const {
  std::vector<std::size_t> widths(columns_.size());
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], columns(row[i].text));
    }
  }
  std::size_t sum = std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
  while (sum > total) {
    std::size_t* widest = nullptr;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      if (columns_[i] == Kind::Name && (widest == nullptr || widths[i] > *widest)) {
        widest = &widths[i];
      }
    }
    if (widest == nullptr || *widest <= kNarrowest) {
      break;
    }
    --*widest;
    --sum;
  }
  return widths;
}

std::string Table::text(const Painter& paint, std::size_t width, const std::string& indent) const {
  const std::vector<std::size_t> widths = this->widths(width - std::min(width, indent.size()));
  std::string result = rows_.empty() ? "" : "\n";
  for (const auto& row : rows_) {
    std::string line = indent;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string text = cut(row[i].text, widths[i]);
      const std::string padding(widths[i] - columns(text), ' ');
      const std::string painted = paint(row[i].colour, text);
      line += std::string(i == 0 ? 0 : kGap, ' ');
      line += columns_[i] == Kind::Right ? padding + painted : painted + padding;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    result += line + '\n';
  }
  return result;
}

}  // namespace zentrel::vistabase::ardelivery::inspect
