#include "support/util/Utf.h"

#include <gtest/gtest.h>

namespace zentrel::vistabase::ardelivery {
namespace {

TEST(Utf, convertsBothWays) {
  const struct {
    std::u16string text;
    std::string bytes;
  } cases[] = {
      {u"", ""},
      {std::u16string(u"a\0b", 3), std::string("a\0b", 3)},
      {u"\u007F\u0080\u07FF\u0800\uFFFF", "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
      {u"\U0001F600\U0010FFFF", "\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"},
      {u"\xD83D", "\xED\xA0\xBD"},
      {u"a\xDE00\xD83Dx", "a\xED\xB8\x80\xED\xA0\xBDx"},
  };
  for (const auto& [text, bytes] : cases) {
    EXPECT_EQ(bytes, utf16ToUtf8(text));
    EXPECT_EQ(text, utf8ToUtf16(bytes));
  }
}

TEST(Utf, replacesEachMalformedSequence) {
  const struct {
    std::string bytes;
    std::u16string text;
  } cases[] = {
      {"\x80z\xFF", u"\uFFFDz\uFFFD"},
      {"\xC0\x80", u"\uFFFD\uFFFD"},                      // overlong zero
      {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"},            // overlong
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond U+10FFFF
      {"\xF0\x9F\x98", u"\uFFFD"},                        // cut at the end
      {"\xF0\x9F\x98z", u"\uFFFDz"},                      // cut in the middle
      {"\xE2\x82\xC3\xA9", u"\uFFFD\u00E9"},
  };
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(text, utf8ToUtf16(bytes));
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
