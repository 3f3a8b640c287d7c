#include "support/json/CompactJson.h"

#include <gmock/gmock.h>

#include <random>

#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "support/json/JsonValue.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::UnorderedElementsAreArray;

std::vector<std::string> recordsOf(const std::string& text) {
  std::vector<std::string> records;
  try {
    for (const auto& [key, entry] : CacheMetadataSerializer().deserialize(text)->getEntries()) {
      records.push_back(key + " " + std::to_string(entry.size) + " " +
                        std::to_string(entry.lastAccess));
    }
  } catch (const std::runtime_error&) {
    records.push_back("error");
  }
  return records;
}

TEST(CompactJson, writesStringsAsTheParserReadsThem) {
  std::string allBytes;
  for (int byte = 0; byte < 256; ++byte) {
    allBytes += static_cast<char>(byte);
    allBytes += "a";
  }
  for (const std::string& value : {allBytes, std::string(), std::string("\"\\\b\f\n\r\t")}) {
    std::string text;
    json::appendString(text, value);
    EXPECT_EQ(value, json::toString(json::parse(text)));
    EXPECT_EQ(json::write(JsonValue(value)), text);
  }
}

/// A space before the document keeps the quick reader from it, and means nothing.
TEST(CompactJson, readsWhatIsQuicklyReadAsTheParserDoes) {
  const std::string document =
      R"({"entries":[{"key":"a","size":-9223372036854775808,"lastAccess":170},)"
      R"({"key":"b\u0041","size":0,"lastAccess":9223372036854775807},)"
      R"({"key":"","size":10,"lastAccess":1.5}]})";
  const std::string bytes = "{}[]\",:0019-+.eE \\\n\t\xFF" + std::string(1, '\0');
  std::mt19937 random(1);
  const auto below = [&random](std::size_t end) { return random() % end; };
  for (int i = 0; i < 20'000; ++i) {
    std::string text =
        document.substr(0, i % 3 == 0 ? document.find(",{\"key\":\"b") : document.npos);
    text += i % 3 == 0 ? "]}" : "";
    for (std::size_t changes = below(3); changes > 0; --changes) {
      text.replace(below(text.size()), below(2), 1, bytes[below(bytes.size())]);
    }
    ASSERT_THAT(recordsOf(text), UnorderedElementsAreArray(recordsOf(" " + text))) << text;
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
