#include <algorithm>
#include <boost/algorithm/hex.hpp>
#include <cwchar>

#include "delivery/FileNames.h"
#include "store/Digest.h"
#include "store/VersionIndex.h"
#include "support/util/Utf.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

/// Whether a terminal obeys the character, shows others in another order because of it, or shows
/// nothing for it.
bool isObeyed(char32_t character) {
  constexpr std::pair<char32_t, char32_t> ranges[] = {
      {0, 0x1F},        {0x7F, 0x9F},     {0xAD, 0xAD},     {0x61C, 0x61C},
      {0x180E, 0x180E}, {0x200B, 0x200F}, {0x2028, 0x202E}, {0x2060, 0x206F},
      {0xD800, 0xDFFF}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F}};
  return std::any_of(std::begin(ranges), std::end(ranges), [character](const auto& range) {
    return character >= range.first && character <= range.second;
  });
}

/// The end of the character at `begin`, and the columns that it takes.
std::size_t next(std::string_view text, std::size_t begin, std::size_t& width) {
  const char32_t character = decodeUtf8(text, begin).value_or(U'?');
  width = static_cast<std::size_t>(std::max(::wcwidth(static_cast<wchar_t>(character)), 0));
  return begin;
}

}  // namespace

std::string cut(const std::string& text, std::size_t width) {
  const std::size_t whole = columns(text);
  if (whole <= width) {
    return text;
  }
  const std::size_t kept = width - std::min<std::size_t>(width, 1);
  const std::string name = text.substr(beginsWith(text, kPartPrefix) ? kPartPrefix.size() : 0);
  const std::size_t type = isModelFileName(name) ? columns(name.substr(kDigestLength)) : 0;
  const std::size_t end = type > 0 && type < kept ? type : kept / 2;
  std::string left;
  std::string right = width == 0 ? "" : "\u2026";
  std::size_t before = 0;  // Columns.
  for (std::size_t begin = 0, at = 0, wide = 0; begin < text.size(); begin = at, before += wide) {
    at = next(text, begin, wide);
    if (before + wide <= kept - end) {
      left += text.substr(begin, at - begin);
    } else if (whole - before <= end) {
      right += text.substr(begin, at - begin);
    }
  }
  return left + right;
}

std::string toUtf8(std::string_view bytes,
                   const std::function<std::string(std::string_view)>& replace) {
  std::string text;
  for (std::size_t begin = 0, end = 0; begin < bytes.size(); begin = end) {
    const auto character = decodeUtf8(bytes, end);
    const std::string_view run = bytes.substr(begin, end - begin);
    text += character && !isObeyed(*character) ? std::string(run) : replace(run);
  }
  return text;
}

std::string printable(std::string_view bytes) {
  return toUtf8(bytes, [](std::string_view run) {
    std::string text;
    for (const char byte : run) {
      text += "\\x" + boost::algorithm::hex_lower(std::string(1, byte));
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

}  // namespace zentrel::vistabase::ardelivery::inspect
