#include "delivery/FileCache/CacheMetadataSerializer.h"

#include <string_view>
#include <utility>
#include <vector>

#include "delivery/FileCache/CacheMetadata.h"
#include "support/json/CompactJson.h"
#include "support/json/JsonDocument.h"
#include "support/json/JsonValue.h"
#include "support/util/ErrorTexts.h"

namespace zentrel::vistabase::ardelivery {
namespace {

// The second text says "descriptor" because it always has; reports are matched by it.
constexpr ErrorTexts kSerializeErrors{
    "Serializing the cache metadata failed with exception: ",
    "Serializing the cache descriptor failed",
};

// The document as it is written: {"entries":[{"key":"a","size":5,"lastAccess":7},{...}]}
constexpr std::string_view kBegin = R"({"entries":[)";
constexpr std::string_view kKey = R"({"key":)";
constexpr std::string_view kSize = R"(,"size":)";
constexpr std::string_view kLastAccess = R"(,"lastAccess":)";
constexpr std::string_view kEnd = "]}";

// What a record takes of it, roughly, when its key is as long as the names of model files are.
constexpr std::size_t kRecordLength = 80;

using Records = std::vector<std::pair<std::string, CacheMetadataEntry>>;

/// Reads a document that is exactly as `serialize` writes it, the usual one; false for any other.
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

/// Reads any document that means one.
Records readAnyhow(const JsonValue& root) {
  Records records;
  for (const JsonValue& element : json::arrayMember(root, "entries")) {
    std::string key = json::toString(json::member(element, "key"));
    if (key.empty()) {
      continue;
    }
    CacheMetadataEntry entry;
    entry.size = json::toInt64(json::member(element, "size"));
    entry.lastAccess = json::toInt64(json::member(element, "lastAccess"));
    records.emplace_back(std::move(key), entry);
  }
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
  return json::deserializing(text, [&text]() -> quovix::unique_ref<ICacheMetadata> {
    Records records;
    if (!text.empty() && !readAsWritten(text, records)) {
      records = json::readRoot(text, &readAnyhow);
    }
    return quovix::make_unique_ref<CacheMetadata>(std::move(records));
  });
}

}  // namespace zentrel::vistabase::ardelivery
