#include <gmock/gmock.h>

#include "support/json/JsonValue.h"
#include "support/util/Utf.h"
#include "tests/cpp/Errors.h"
#include "tests/cpp/reading.h"

namespace zentrel::vistabase::ardelivery {
namespace {

/// Each text, and the object that is written once it has been read, or how the message ends that
/// quotes and refuses it.
template <class Serializer>
void expectOutcomes(const std::vector<std::pair<std::string, std::string>>& texts) {
  for (const auto& [given, expected] : texts) {
    const std::string& text = given;
    const bool isAccepted = expected[0] == '{';
    std::string written;
    const auto rewrite = [&] { written = Serializer().serialize(*Serializer().deserialize(text)); };
    EXPECT_THAT(errorOf(rewrite), testing::EndsWith(isAccepted ? "no error" : expected));
    EXPECT_EQ(isAccepted ? expected : "", written);
    EXPECT_EQ(isAccepted ? Reading::Accepted : Reading::Refused, readingOf<Serializer>(text));
  }
}

TEST(Serializers, writeMetadataCompactlyAndQuoteWhatTheyRefuse) {
  const std::string empty = R"({"entries":[]})";
  const std::string usual = R"({"entries":[{"key":"a","size":5,"lastAccess":1700000000000}]})";
  const std::string escaped = R"({"entries":[{"key":"a\"\n","size":-5,"lastAccess":0}]})";
  expectOutcomes<CacheMetadataSerializer>({
      {"", empty},
      {usual, usual},
      {escaped, escaped},
      {R"({"entries":[{"key":"","size":1,"lastAccess":1}]})", empty},
      {R"({"x":0,"entries":[{"key":""},)"
       R"({"lastAccess":true,"y":[1e400,99999999999999999999],"size":"42","key":7}]})",
       R"({"entries":[{"key":"7","size":42,"lastAccess":1}]})"},
      {" ", ""},
      {"{}", "exception: entries: type error: expected array, found null"},
      {"null", "exception: type error: expected object, found null"},
      {R"({"entries":{}})", ""},
      {R"({"entries":[1]})", ""},
      {R"({"entries":[{"size":1,"lastAccess":1}]})", ""},
      {R"({"entries":[{"key":null}]})", ""},
      {R"({"entries":[{"key":"a","size":null}]})", "entries[0]: missing member \"lastAccess\""},
      {R"({"entries":[{"key":"a","lastAccess":null}]})", "entries[0]: missing member \"size\""},
      {R"({"entries":[{"key":"a","size":1,"lastAccess":9223372036854775808}]})", ""},
  });
}

TEST(Serializers, writeDescriptorsCompactlyAndQuoteWhatTheyRefuse) {
  const std::string usual = R"({"versions":[{"version":3,"models":[{"type":"t","cacheKey":"k1"},)"
                            R"({"type":"u","cacheKey":"k2"}]},{"version":-1,"models":[]}]})";
  expectOutcomes<CacheDescriptorSerializer>({
      {"", R"({"versions":[]})"},
      {usual, usual},
      {R"({"versions":[{"models":[{"cacheKey":1.5,"type":true}],"version":"5"}]})",
       R"({"versions":[{"version":5,"models":[{"type":"1","cacheKey":"1.5"}]}]})"},
      {"{}", ""},
      {"null", ""},
      {R"({"versions":{}})", ""},
      {R"({"versions":[{"version":1}]})", ""},
      {R"({"versions":[{"models":[]}]})", ""},
      {R"({"versions":[{"version":2147483648,"models":[]}]})", ""},
      {R"({"versions":[{"version":1,"models":[{"type":null}]}]})",
       "versions[0].models[0]: missing member \"cacheKey\""},
      {R"({"versions":[{"version":1,"models":[{"type":"t","cacheKey":[]}]}]})", ""},
  });
}

/// What a text becomes, or why it does not.
template <class Convert>
std::string outcome(const Convert& convert, const std::string& text) {
  std::string result;
  const std::string error = errorOf([&] { result = convert(json::parse(text)); });
  return error == "no error" ? result : error;
}

TEST(JsonValue, convertsScalarsStrictly) {
  const std::string max = "9223372036854775807";
  const std::string tooLarge = "9223372036854775808";
  const std::string notInt = " is not a 64-bit integer";
  const std::string noScalar = "type error: expected int/double/bool/string, found ";
  const std::string outOfRange = "conversion error: a number out of range";
  const struct {
    std::string text, asString, asInt64;
  } cases[] = {
      {max, max, max},
      {tooLarge, outOfRange, outOfRange},
      {"1e400", outOfRange, outOfRange},
      {"1.5", "1.5", "conversion error: 1.5" + notInt},
      {"-2.0", "-2", "-2"},
      {"9223372036854775808.0", tooLarge, "conversion error: " + tooLarge + notInt},
      {"-9223372036854775808.0", "-9223372036854775808", "-9223372036854775808"},
      {"-9223372036854775809", outOfRange, outOfRange},
      {"8343479475794961.0", "8343479475794961", "8343479475794961"},
      {"8.4344596635173000e+13", "84344596635173", "84344596635173"},
      {"0.1", "0.1", "conversion error: 0.1" + notInt},
      {"true", "1", "1"},
      {"false", "0", "0"},
      {R"("42")", "42", "42"},
      {R"("42 ")", "42 ", R"(conversion error: "42 ")" + notInt},
      {R"("")", "", R"(conversion error: "")" + notInt},
      {R"("9223372036854775808")", tooLarge, "conversion error: \"" + tooLarge + "\"" + notInt},
      {"null", noScalar + "null", noScalar + "null"},
      {"[]", noScalar + "array", noScalar + "array"},
      {"[x]", "parse error: syntax error at byte 1", "parse error: syntax error at byte 1"},
  };
  for (const auto& [text, asString, asInt64] : cases) {
    EXPECT_EQ(asString, outcome(&json::toString, text)) << text;
    EXPECT_EQ(asInt64,
              outcome([](const JsonValue& v) { return std::to_string(json::toInt64(v)); }, text))
        << text;
  }
  const auto toInt32 = [](const JsonValue& v) { return std::to_string(json::toInt32(v)); };
  EXPECT_EQ("-2147483648", outcome(toInt32, "-2147483648"));
  EXPECT_EQ("conversion error: 2147483648 is not a 32-bit integer", outcome(toInt32, "2147483648"));
}

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
