#include <gmock/gmock.h>

#include "delivery/FileCache/CacheMetadata.h"
#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::StartsWith;

const std::string kMetadata =
    R"({"entries":[{"key":"a\"\n","size":5,"lastAccess":1700000000000}]})";
const std::string kDescriptor =
    R"({"versions":[{"version":3,"models":[{"type":"t","cacheKey":"k1"},)"
    R"({"type":"u","cacheKey":"k2"}]},{"version":-1,"models":[]}]})";

template <class Serializer>
std::string errorOf(const std::string& text) {
  try {
    Serializer().deserialize(text);
    return "no error";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(Serializers, writeCompactDocumentsAndReadThemBack) {
  CacheMetadataSerializer metadata;
  EXPECT_EQ(kMetadata, metadata.serialize(*metadata.deserialize(kMetadata)));
  EXPECT_EQ(R"({"entries":[]})", metadata.serialize(*metadata.deserialize("")));
  CacheDescriptorSerializer descriptor;
  EXPECT_EQ(kDescriptor, descriptor.serialize(*descriptor.deserialize(kDescriptor)));
  EXPECT_EQ(R"({"versions":[]})", descriptor.serialize(*descriptor.deserialize("")));
}

TEST(Serializers, acceptWhatConvertsAndSkipEmptyKeys) {
  CacheMetadataSerializer serializer;
  const auto metadata = serializer.deserialize(
      R"({"x":0,"entries":[{"key":""},{"lastAccess":true,"y":[1e400,99999999999999999999],"size":"42","key":7}]})");
  const auto entries = metadata->getEntries();
  ASSERT_EQ(1u, entries.size());
  EXPECT_EQ("7", entries[0].first);
  EXPECT_EQ(42, entries[0].second.size);
  EXPECT_EQ(1, entries[0].second.lastAccess);
  EXPECT_FALSE(entries[0].second.locked);

  const auto descriptor = CacheDescriptorSerializer().deserialize(
      R"({"versions":[{"models":[{"cacheKey":1.5,"type":true}],"version":"5"}]})");
  EXPECT_EQ(5, descriptor->versions.at(0).version);
  EXPECT_EQ("1.5", descriptor->versions[0].models.at(0).cacheKey);
  EXPECT_EQ("1", descriptor->versions[0].models[0].type);
}

TEST(Serializers, quoteTheWholeTextOfWhatTheyCannotRead) {
  const std::string badMetadata[] = {
      " ",
      "[]",
      "{}",
      R"({"entries":{}})",
      R"({"entries":7})",
      R"({"entries":[1]})",
      R"({"entries":[{"size":1,"lastAccess":1}]})",
      R"({"entries":[{"key":null}]})",
      R"({"entries":[{"key":"a","size":1}]})",
      R"({"entries":[{"key":"a","lastAccess":1}]})",
      R"({"entries":[{"key":"a","size":1.5,"lastAccess":1}]})",
      R"({"entries":[{"key":"a","size":1,"lastAccess":9223372036854775808}]})",
      kMetadata + "x",
      kMetadata.substr(0, 40)};
  for (const std::string& text : badMetadata) {
    EXPECT_THAT(errorOf<CacheMetadataSerializer>(text),
                StartsWith("Deserializing failed: '" + text + "' with exception: "));
  }
  const std::string badDescriptors[] = {
      "{}",
      "null",
      R"({"versions":{}})",
      R"({"versions":[{"version":1}]})",
      R"({"versions":[{"models":[]}]})",
      R"({"versions":[{"version":null,"models":[]}]})",
      R"({"versions":[{"version":2147483648,"models":[]}]})",
      R"({"versions":[{"version":1,"models":[{"type":"t"}]}]})",
      R"({"versions":[{"version":1,"models":[{"type":"t","cacheKey":[]}]}]})"};
  for (const std::string& text : badDescriptors) {
    EXPECT_THAT(errorOf<CacheDescriptorSerializer>(text),
                StartsWith("Deserializing failed: '" + text + "' with exception: "));
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
