#include <gtest/gtest.h>

#include <iostream>

#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"

namespace zentrel::vistabase::ardelivery {
namespace {

int refused = 0;

/// Reads damaged text: any outcome will do but a wrong message, a crash or undefined behaviour.
/// White space before it changes nothing, but keeps the quick reader for the usual text from it.
template <class Serializer>
void read(const std::string& text) {
  Serializer serializer;
  std::string written;
  try {
    written = serializer.serialize(*serializer.deserialize(text));
  } catch (const std::runtime_error& error) {
    ++refused;
    const std::string expected = "Deserializing failed: '" + text + "' with exception: ";
    EXPECT_EQ(0u, std::string(error.what()).find(expected.c_str()));
    EXPECT_THROW(serializer.deserialize(" " + text), std::runtime_error);
    return;
  }
  if (!text.empty()) {
    EXPECT_EQ(written, serializer.serialize(*serializer.deserialize(" " + text)));
  }
}

std::string replaced(std::string text, const std::string& part, const std::string& by) {
  return text.replace(text.find(part), part.size(), by);
}

/// Damages a document in every way that a loop can reach. `values` are texts of values in it.
template <class Serializer>
void damage(const std::string& document, const std::vector<std::string>& values) {
  for (std::size_t i = 0; i < document.size(); ++i) {
    read<Serializer>(document.substr(0, i));
    for (int bit = 0; bit < 8; ++bit) {
      std::string flipped = document;
      flipped[i] = static_cast<char>(flipped[i] ^ (1 << bit));
      read<Serializer>(flipped);
    }
  }
  const std::string deep = std::string(1000, '[') + std::string(1000, ']');
  for (const std::string& value : values) {
    ASSERT_NE(std::string::npos, document.find(value));
    for (const std::string& other :
         {std::string("null"), std::string("true"), std::string("1.5"), std::string("-1e400"),
          std::string("9223372036854775807"), std::string("-9223372036854775808"),
          std::string("18446744073709551615"), std::string("99999999999999999999"),
          std::string(R"("\u0000\ud800")"), std::string("\"\xFF\xFE\""), std::string("[]"),
          std::string(R"({"key":{}})"), std::string(R"([[{"key":[]}]])"), deep}) {
      read<Serializer>(replaced(document, value, other));
    }
  }
  read<Serializer>("\xEF\xBB\xBF" + document);
  read<Serializer>(document + document);
}

TEST(DamagedDocuments, givesTheRequiredMessageOrAValidDocument) {
  damage<CacheMetadataSerializer>(
      R"({"entries":[{"key":"a","size":9223372036854775807,"lastAccess":1},)"
      R"({"key":"b","size":5,"lastAccess":1700000000000},{"key":"b","size":5,"size":6,"lastAccess":2}]})",
      {R"("a")", "9223372036854775807", "1700000000000", R"({"key":"b","size":5,"lastAccess":17)",
       R"([{"key":"a")"});
  damage<CacheDescriptorSerializer>(
      R"({"versions":[{"version":3,"models":[{"type":"t","cacheKey":"k1"},)"
      R"({"type":"u","cacheKey":"k2"}]},{"version":3,"version":-1,"models":[]}]})",
      {"3", R"("t")", R"("k1")", "[]", R"({"type":"u","cacheKey":"k2"})"});
  EXPECT_GT(refused, 1000);
  std::cout << refused << " damaged documents refused\n";
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
