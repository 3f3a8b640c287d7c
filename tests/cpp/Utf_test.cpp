#include "support/util/Utf.h"

#include <gtest/gtest.h>

namespace zentrel::vistabase::ardelivery {
namespace {

TEST(Utf, convertsBothWaysAndReplacesMalformedSequences) {
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
      {u"\uFFFDz\uFFFD", "\x80z\xFF"},
      {u"\uFFFD\uFFFD", "\xC0\x80"},                      // overlong zero
      {u"\uFFFD\uFFFD\uFFFD", "\xE0\x9F\xBF"},            // overlong
      {u"\uFFFD\uFFFD\uFFFD\uFFFD", "\xF4\x90\x80\x80"},  // beyond U+10FFFF
      {u"\uFFFD", "\xF0\x9F\x98"},                        // cut at the end
      {u"\uFFFDz", "\xF0\x9F\x98z"},                      // cut in the middle
      {u"\uFFFD\u00E9", "\xE2\x82\xC3\xA9"},
  };
  for (const auto& [text, bytes] : cases) {
    EXPECT_EQ(text, utf8ToUtf16(bytes));
    if (text.find(u'\uFFFD') == std::u16string::npos) {
      EXPECT_EQ(bytes, utf16ToUtf8(text));
    }
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
