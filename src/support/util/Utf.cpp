#include "support/util/Utf.h"

#include <cstddef>

namespace zentrel::vistabase::ardelivery {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// What a lead byte says: how many bytes follow, its payload bits, and the range of the second byte
/// (which excludes overlong forms and code points beyond U+10FFFF).
struct Lead {
  int following;
  char32_t bits;
  unsigned char secondMin;
  unsigned char secondMax;
};

constexpr Lead kMalformed{-1, 0, 0, 0};

Lead decodeLead(unsigned char byte) {
  if (byte < 0x80) {
    return {0, byte, 0, 0};
  }
  if (byte >= 0xC2 && byte <= 0xDF) {
    return {1, byte & 0x1Fu, 0x80, 0xBF};
  }
  if (byte >= 0xE0 && byte <= 0xEF) {
    return {2, byte & 0x0Fu, static_cast<unsigned char>(byte == 0xE0 ? 0xA0 : 0x80), 0xBF};
  }
  if (byte >= 0xF0 && byte <= 0xF4) {
    return {3, byte & 0x07u, static_cast<unsigned char>(byte == 0xF0 ? 0x90 : 0x80),
            static_cast<unsigned char>(byte == 0xF4 ? 0x8F : 0xBF)};
  }
  return kMalformed;
}

void appendUtf8(std::string& bytes, char32_t character) {
  const auto append = [&bytes](char32_t byte) { bytes += static_cast<char>(byte); };
  if (character < 0x80) {
    append(character);
  } else if (character < 0x800) {
    append(0xC0 | (character >> 6));
    append(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    append(0xE0 | (character >> 12));
    append(0x80 | ((character >> 6) & 0x3F));
    append(0x80 | (character & 0x3F));
  } else {
    append(0xF0 | (character >> 18));
    append(0x80 | ((character >> 12) & 0x3F));
    append(0x80 | ((character >> 6) & 0x3F));
    append(0x80 | (character & 0x3F));
  }
}

}  // namespace

std::string utf16ToUtf8(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t character = text[i];
    if (isHighSurrogate(character) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
      character = 0x10000 + ((character - 0xD800) << 10) + (text[++i] - 0xDC00u);
    }
    appendUtf8(bytes, character);
  }
  return bytes;
}

std::optional<char32_t> decodeUtf8(std::string_view bytes, std::size_t& position) {
  const auto lead = decodeLead(static_cast<unsigned char>(bytes[position++]));
  if (lead.following < 0) {
    return std::nullopt;
  }
  char32_t character = lead.bits;
  for (int i = 0; i < lead.following; ++i) {
    const unsigned char min = i == 0 ? lead.secondMin : 0x80;
    const unsigned char max = i == 0 ? lead.secondMax : 0xBF;
    if (position == bytes.size()) {
      return std::nullopt;
    }
    const auto byte = static_cast<unsigned char>(bytes[position]);
    if (byte < min || byte > max) {
      return std::nullopt;
    }
    character = (character << 6) | (byte & 0x3Fu);
    ++position;
  }
  return character;
}

std::u16string utf8ToUtf16(std::string_view bytes) {
  std::u16string text;
  text.reserve(bytes.size());
  for (std::size_t position = 0; position < bytes.size();) {
    const char32_t character = decodeUtf8(bytes, position).value_or(kReplacement);
    if (character < 0x10000) {
      text += static_cast<char16_t>(character);
    } else {
      text += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
      text += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
    }
  }
  return text;
}

}  // namespace zentrel::vistabase::ardelivery
