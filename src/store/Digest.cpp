#include "store/Digest.h"

#include <algorithm>
#include <stdexcept>

namespace zentrel::vistabase::ardelivery {

std::string toHex(const unsigned char* bytes, std::size_t count) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * count);
  for (std::size_t i = 0; i < count; ++i) {
    text += digits[bytes[i] >> 4];
    text += digits[bytes[i] & 0xF];
  }
  return text;
}

std::string requireDigest(std::string digest) {
  const std::string given = digest;
  for (char& c : digest) {
    c = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  if (!isDigest(digest)) {
    throw std::invalid_argument("not 64 hexadecimal digits: " + given);
  }
  return digest;
}

bool isDigest(std::string_view text) noexcept {
  return text.size() == kDigestLength && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
         });
}

}  // namespace zentrel::vistabase::ardelivery
