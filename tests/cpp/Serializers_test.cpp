#include <gmock/gmock.h>

#include "tests/cpp/Errors.h"
#include "tests/cpp/reading.h"

namespace zentrel::vistabase::ardelivery {
namespace {

const std::string kMetadata = R"({"entries":[{"key":"a","size":5,"lastAccess":1700000000000}]})";
const std::string kDescriptor =
    R"({"versions":[{"version":3,"models":[{"type":"t","cacheKey":"k1"},)"
    R"({"type":"u","cacheKey":"k2"}]},{"version":-1,"models":[]}]})";

/// The text after reading and writing it.
template <class Serializer>
std::string rewritten(const std::string& text) {
  Serializer serializer;
  return serializer.serialize(*serializer.deserialize(text));
}

/// What the message about a text says after the quotation.
template <class Serializer>
std::string failureOf(const std::string& text) {
  try {
    Serializer().deserialize(text);
  } catch (const std::runtime_error& error) {
    const std::string quoted = "Deserializing failed: '" + text + "' with exception: ";
    return std::string(error.what()).substr(quoted.size());
  }
  return "";
}

TEST(Serializers, writeCompactDocumentsOfWhateverTheyAccept) {
  const std::string empty = R"({"entries":[]})";
  const std::string escaped = R"({"entries":[{"key":"a\"\n","size":-5,"lastAccess":0}]})";
  const std::pair<std::string, std::string> metadata[] = {
      {"", empty},
      {kMetadata, kMetadata},
      {escaped, escaped},
      {R"({"entries":[{"key":"","size":1,"lastAccess":1}]})", empty},
      {R"({"x":0,"entries":[{"key":""},)"
       R"({"lastAccess":true,"y":[1e400,99999999999999999999],"size":"42","key":7}]})",
       R"({"entries":[{"key":"7","size":42,"lastAccess":1}]})"},
  };
  for (const auto& [text, expected] : metadata) {
    EXPECT_EQ(expected, rewritten<CacheMetadataSerializer>(text));
  }
  const std::pair<std::string, std::string> descriptors[] = {
      {"", R"({"versions":[]})"},
      {kDescriptor, kDescriptor},
      {R"({"versions":[{"models":[{"cacheKey":1.5,"type":true}],"version":"5"}]})",
       R"({"versions":[{"version":5,"models":[{"type":"1","cacheKey":"1.5"}]}]})"},
  };
  for (const auto& [text, expected] : descriptors) {
    EXPECT_EQ(expected, rewritten<CacheDescriptorSerializer>(text));
  }
}

TEST(Serializers, quoteTheWholeTextOfWhatTheyCannotRead) {
  for (const std::string text :
       {" ", "[]", "{}", R"({"entries":{}})", R"({"entries":7})", R"({"entries":[1]})",
        R"({"entries":[{"size":1,"lastAccess":1}]})", R"({"entries":[{"key":null}]})",
        R"({"entries":[{"key":"a","size":1}]})", R"({"entries":[{"key":"a","lastAccess":1}]})",
        R"({"entries":[{"key":"a","size":1.5,"lastAccess":1}]})",
        R"({"entries":[{"key":"a","size":1,"lastAccess":9223372036854775808}]})"}) {
    EXPECT_EQ(Reading::Refused, readingOf<CacheMetadataSerializer>(text)) << text;
  }
  for (const std::string text :
       {"{}", "null", R"({"versions":{}})", R"({"versions":[{"version":1}]})",
        R"({"versions":[{"models":[]}]})", R"({"versions":[{"version":null,"models":[]}]})",
        R"({"versions":[{"version":2147483648,"models":[]}]})",
        R"({"versions":[{"version":1,"models":[{"type":"t"}]}]})",
        R"({"versions":[{"version":1,"models":[{"type":"t","cacheKey":[]}]}]})"}) {
    EXPECT_EQ(Reading::Refused, readingOf<CacheDescriptorSerializer>(text)) << text;
  }
}

TEST(Serializers, tellTheFirstFailureInTheOrderOfTheirLookUps) {
  const std::pair<std::string, std::string> metadata[] = {
      {"{}", "entries: type error: expected array, found null"},
      {"null", "type error: expected object, found null"},
      {R"({"entries":[{"key":"a","size":null}]})", "entries[0]: missing member \"lastAccess\""},
      {R"({"entries":[{"key":"a","lastAccess":null}]})", "entries[0]: missing member \"size\""},
  };
  for (const auto& [text, failure] : metadata) {
    EXPECT_EQ(failure, failureOf<CacheMetadataSerializer>(text)) << text;
  }
  EXPECT_EQ("versions[0].models[0]: missing member \"cacheKey\"",
            failureOf<CacheDescriptorSerializer>(
                R"({"versions":[{"version":1,"models":[{"type":null}]}]})"));
}

/// Damages a document in every way that a loop can reach: any outcome will do but a wrong message,
/// a crash or undefined behaviour. `values` are texts of values in it.
template <class Serializer>
void damage(const std::string& document, const std::vector<std::string>& values) {
  std::vector<std::string> damaged = {"\xEF\xBB\xBF" + document, document + document,
                                      document + "x"};
  for (std::size_t i = 0; i < document.size(); ++i) {
    damaged.push_back(document.substr(0, i));
    for (int bit = 0; bit < 8; ++bit) {
      damaged.push_back(document);
      damaged.back()[i] = static_cast<char>(document[i] ^ (1 << bit));
    }
  }
  const std::string deep = std::string(1000, '[') + std::string(1000, ']');
  for (const std::string& value : values) {
    for (const std::string& other :
         {std::string("null"), std::string("true"), std::string("1.5"), std::string("007"),
          std::string("-1e400"), std::string("-9223372036854775808"),
          std::string("18446744073709551615"), std::string("99999999999999999999"),
          std::string(R"("\u0000\ud800")"), std::string("\"\xFF\xFE\""), std::string("[]"),
          std::string(R"({"key":{}})"), std::string(R"([[{"key":[]}]])"), deep}) {
      damaged.push_back(document);
      damaged.back().replace(document.find(value), value.size(), other);
    }
  }
  std::size_t refused = 0;
  for (const std::string& text : damaged) {
    const Reading reading = readingOf<Serializer>(text);
    EXPECT_NE(Reading::Wrong, reading) << text;
    refused += reading == Reading::Refused ? 1 : 0;
  }
  EXPECT_GT(refused, damaged.size() / 2);
}

TEST(DamagedDocuments, giveTheRequiredMessageOrAValidDocument) {
  damage<CacheMetadataSerializer>(kMetadata, {R"("a")", "5", "1700000000000", "[{\"key\":\"a\""});
  damage<CacheMetadataSerializer>(
      R"({"entries":[{"key":"a","size":9223372036854775807,"lastAccess":1},)"
      R"({"key":"b","size":5,"size":6,"lastAccess":2}]})",
      {"9223372036854775807", R"({"key":"b","size":5,"size)"});
  damage<CacheDescriptorSerializer>(
      kDescriptor, {"3", R"("t")", R"("k1")", "[]", R"({"type":"u","cacheKey":"k2"})"});
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
