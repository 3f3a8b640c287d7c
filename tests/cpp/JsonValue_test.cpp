#include <gtest/gtest.h>

#include "support/json/CompactJson.h"
#include "support/json/JsonValue.h"

namespace zentrel::vistabase::ardelivery {
namespace {

template <class Convert>
std::string outcome(const Convert& convert, const std::string& text) {
  try {
    return convert(json::parse(text));
  } catch (const std::runtime_error& error) {
    return error.what();
  }
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

TEST(JsonValue, keepsAllBytesHoweverTheyAreWritten) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    bytes += static_cast<char>(byte);
  }
  std::string appended;
  json::appendString(appended, bytes);
  EXPECT_EQ(json::write(JsonValue(bytes)), appended);
  EXPECT_EQ(bytes, json::toString(json::parse(appended)));
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
