#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zentrel::vistabase::ardelivery {

/// UTF-16, as managed strings hold it, to UTF-8, as file names are written: a character beyond
/// U+FFFF becomes four bytes, U+0000 one zero byte, and an unpaired surrogate the three bytes that
/// its number gives, so that it survives a round trip.
std::string utf16ToUtf8(std::u16string_view text);

/// Any bytes to UTF-16. Surrogates in three bytes are kept; each other malformed sequence (a
/// maximal beginning of a well-formed one, or a single byte) becomes U+FFFD.
std::u16string utf8ToUtf16(std::string_view bytes);

/// The character at `position`, which is moved past it. None, and moved past what is malformed, as
/// `utf8ToUtf16` understands that: a surrogate in three bytes is a character here.
std::optional<char32_t> decodeUtf8(std::string_view bytes, std::size_t& position);

}  // namespace zentrel::vistabase::ardelivery
