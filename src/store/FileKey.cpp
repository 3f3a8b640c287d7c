#include "store/FileKey.h"

#include <stdexcept>
#include <string_view>

#include "delivery/FileNames.h"
#include "support/util/Utf.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";
constexpr std::size_t kUnitDigits = 4;

bool isPlain(char16_t unit, bool isFirst) {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
         (unit >= u'0' && unit <= u'9') || unit == u'-' || unit == u'_' ||
         (unit == u'.' && !isFirst);
}

/// A surrogate may stand alone, as in Java, but two that are a character have to be one.
std::u16string unitsOf(const std::string& key) {
  std::u16string units = utf8ToUtf16(key);
  if (utf16ToUtf8(units) != key) {
    throw std::invalid_argument("the key is not UTF-8");
  }
  return units;
}

}  // namespace

std::string nameOfKey(const std::string& key) {
  std::string name = isReserved(key) ? "%" : "";
  bool isFirst = true;
  for (const char16_t unit : unitsOf(key)) {
    if (isPlain(unit, isFirst)) {
      name += static_cast<char>(unit);
    } else {
      name += '%';
      for (int shift = 12; shift >= 0; shift -= 4) {
        name += kDigits[(unit >> shift) & 0xF];
      }
    }
    isFirst = false;
  }
  if (name.empty() || name.size() > kLongestKeyName) {
    throw std::invalid_argument(joined("the file name of a key has 1 to ", kLongestKeyName,
                                       " characters, not ", name.size(), ": ", key));
  }
  return name;
}

std::optional<std::string> keyOfName(const std::string& name) {
  std::u16string key;
  const bool isPrefixed = !name.empty() && name[0] == '%' && isReserved(name.substr(1));
  for (std::size_t i = isPrefixed ? 1 : 0; i < name.size(); ++i) {
    char16_t unit = static_cast<unsigned char>(name[i]);
    if (unit == u'%') {
      unit = 0;
      for (std::size_t digit = 0; digit < kUnitDigits; ++digit) {
        const std::size_t value = ++i < name.size() ? kDigits.find(name[i]) : std::string::npos;
        if (value == std::string::npos) {
          return std::nullopt;
        }
        unit = static_cast<char16_t>(std::size_t{unit} * 16 + value);
      }
    }
    key += unit;
  }
  const std::string text = utf16ToUtf8(key);
  try {
    return nameOfKey(text) == name ? std::optional(text) : std::nullopt;
  } catch (const std::invalid_argument&) {
    return std::nullopt;
  }
}

}  // namespace zentrel::vistabase::ardelivery
