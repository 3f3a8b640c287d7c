#include "delivery/FileCache/CacheMetadataSerializer.h"

#include <utility>
#include <vector>

#include "delivery/FileCache/CacheMetadata.h"
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

}  // namespace

std::string CacheMetadataSerializer::serialize(const ICacheMetadata& metadata) {
  return rethrowDescribed(kSerializeErrors, [&metadata] {
    boost::json::array entries;
    for (const auto& [key, entry] : metadata.getEntries()) {
      entries.push_back(boost::json::object{
          {"key", key}, {"size", entry.size}, {"lastAccess", entry.lastAccess}});
    }
    boost::json::object root;
    root["entries"] = std::move(entries);
    return json::write(std::move(root));
  });
}

quovix::unique_ref<ICacheMetadata> CacheMetadataSerializer::deserialize(const std::string& text) {
  if (text.empty()) {
    return quovix::make_unique_ref<CacheMetadata>();
  }
  return json::readDocument(text, [](const JsonValue& root) -> quovix::unique_ref<ICacheMetadata> {
    std::vector<std::pair<std::string, CacheMetadataEntry>> entries;
    for (const JsonValue& element : json::arrayMember(root, "entries")) {
      std::string key = json::toString(json::member(element, "key"));
      if (key.empty()) {
        continue;
      }
      CacheMetadataEntry entry;
      entry.size = json::toInt64(json::member(element, "size"));
      entry.lastAccess = json::toInt64(json::member(element, "lastAccess"));
      entries.emplace_back(std::move(key), entry);
    }
    return quovix::make_unique_ref<CacheMetadata>(std::move(entries));
  });
}

}  // namespace zentrel::vistabase::ardelivery
