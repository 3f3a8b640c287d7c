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

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
