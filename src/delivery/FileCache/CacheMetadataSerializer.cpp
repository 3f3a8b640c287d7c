#include "delivery/FileCache/CacheMetadataSerializer.h"

#include <string_view>
#include <utility>
#include <vector>

#include "delivery/FileCache/CacheMetadata.h"
#include "support/json/CompactJson.h"
#include "support/json/JsonValue.h"
#include "support/util/ErrorTexts.h"

namespace zentrel::vistabase::ardelivery {
namespace {

// The second text says "descriptor" because report collectors match on it.
constexpr ErrorTexts kSerializeErrors{
    "Serializing the cache metadata failed with exception: ",
    "Serializing the cache descriptor failed",
};

// The document as written: {"entries":[{"key":"a","size":5,"lastAccess":7},{...}]}
constexpr std::string_view kBegin = R"({"entries":[)";
constexpr std::string_view kKey = R"({"key":)";
constexpr std::string_view kSize = R"(,"size":)";
constexpr std::string_view kLastAccess = R"(,"lastAccess":)";
constexpr std::string_view kEnd = "]}";

// The approximate length of a record whose key is as long as a model file's name.
constexpr std::size_t kRecordLength = 80;

using Records = std::vector<std::pair<std::string, CacheMetadataEntry>>;

/// Reads a document in exactly the form that `serialize` writes, as most are. Returns false for any
/// other.
bool readAsWritten(const std::string& text, Records& records) {
  json::CompactReader reader(text);
  if (!reader.skip(kBegin)) {
    return false;
  }
  records.reserve(text.size() / kRecordLength + 1);
  do {
    std::string_view key;
    CacheMetadataEntry entry;
    if (!(reader.skip(kKey) && reader.readString(key) && reader.skip(kSize) &&
          reader.readInteger(entry.size) && reader.skip(kLastAccess) &&
          reader.readInteger(entry.lastAccess) && reader.skip("}"))) {
      return false;
    }
    if (!key.empty()) {
      records.emplace_back(key, entry);
    }
  } while (reader.skip(","));
  return reader.skip(kEnd) && reader.atEnd();
}

/// Reads any document.
Records readRecords(const JsonValue& root) {
  Records records;
  json::forEach(root, "entries", [&records](const JsonValue& element) {
    std::string key = json::member(element, "key", &json::toString);
    if (key.empty()) {
      return;
    }
    json::requireMembers(element, {"size", "lastAccess"});
    CacheMetadataEntry entry;
    entry.size = json::member(element, "size", &json::toInt64);
    entry.lastAccess = json::member(element, "lastAccess", &json::toInt64);
    records.emplace_back(std::move(key), entry);
  });
  return records;
}

}  // namespace

std::string CacheMetadataSerializer::serialize(const ICacheMetadata& metadata) {
  return rethrowDescribed(kSerializeErrors, [&metadata] {
    const Records records = metadata.getEntries();
    std::string text;
    text.reserve(kRecordLength * (records.size() + 1));
    text += kBegin;
    for (const auto& [key, entry] : records) {
      if (text.size() != kBegin.size()) {
        text += ',';
      }
      json::appendString(text.append(kKey), key);
      json::appendInteger(text.append(kSize), entry.size);
      json::appendInteger(text.append(kLastAccess), entry.lastAccess);
      text += '}';
    }
    text += kEnd;
    return text;
  });
}

quovix::unique_ref<ICacheMetadata> CacheMetadataSerializer::deserialize(const std::string& text) {
  return json::readDocument(text, [&text]() -> quovix::unique_ref<ICacheMetadata> {
    Records records;
    if (!text.empty() && !readAsWritten(text, records)) {
      records = readRecords(json::parse(text));
    }
    return quovix::make_unique_ref<CacheMetadata>(std::move(records));
  });
}

}  // namespace zentrel::vistabase::ardelivery
