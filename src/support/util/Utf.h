#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zentrel::vistabase::ardelivery {

/// Converts UTF-16, as in managed strings, to UTF-8, as in file names. A character beyond U+FFFF
/// becomes four bytes, U+0000 one zero byte. An unpaired surrogate is encoded in three bytes like
/// any other code point, so that it survives a round trip.
std::string utf16ToUtf8(std::u16string_view text);

/// Converts arbitrary bytes to UTF-16. Surrogates encoded in three bytes are kept; every other
/// malformed sequence (a maximal prefix of a well-formed one, or a single byte) becomes U+FFFD.
std::u16string utf8ToUtf16(std::string_view bytes);

/// Decodes the character at `position` and advances past it. Returns nullopt for a malformed
/// sequence as defined by `utf8ToUtf16`, and advances past that.
std::optional<char32_t> decodeUtf8(std::string_view bytes, std::size_t& position);

}  // namespace zentrel::vistabase::ardelivery
