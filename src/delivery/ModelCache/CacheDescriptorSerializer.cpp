#include "delivery/ModelCache/CacheDescriptorSerializer.h"

#include <utility>

#include "support/json/JsonDocument.h"
#include "support/json/JsonValue.h"
#include "support/util/ErrorTexts.h"

namespace zentrel::vistabase::ardelivery {
namespace {

constexpr ErrorTexts kSerializeErrors{
    "Serializing the cache descriptor failed with exception: ",
    "Serializing the cache descriptor failed",
};

boost::json::object toJson(const VersionRecord& record) {
  boost::json::array models;
  for (const ModelRecord& model : record.models) {
    models.push_back(boost::json::object{{"type", model.type}, {"cacheKey", model.cacheKey}});
  }
  boost::json::object version;
  version["version"] = record.version;
  version["models"] = std::move(models);
  return version;
}

VersionRecord toRecord(const JsonValue& version) {
  VersionRecord record{json::toInt32(json::member(version, "version")), {}};
  for (const JsonValue& model : json::arrayMember(version, "models")) {
    record.models.push_back({json::toString(json::member(model, "type")),
                             json::toString(json::member(model, "cacheKey"))});
  }
  return record;
}

std::vector<VersionRecord> toRecords(const JsonValue& root) {
  std::vector<VersionRecord> records;
  for (const JsonValue& version : json::arrayMember(root, "versions")) {
    records.push_back(toRecord(version));
  }
  return records;
}

}  // namespace

std::string CacheDescriptorSerializer::serialize(const CacheDescriptor& descriptor) {
  return rethrowDescribed(kSerializeErrors, [&descriptor] {
    boost::json::array versions;
    for (const VersionRecord& record : descriptor.versions) {
      versions.push_back(toJson(record));
    }
    boost::json::object root;
    root["versions"] = std::move(versions);
    return json::write(std::move(root));
  });
}

std::unique_ptr<CacheDescriptor> CacheDescriptorSerializer::deserialize(const std::string& text) {
  return json::deserializing(text, [&text] {
    auto descriptor = std::make_unique<CacheDescriptor>();
    if (!text.empty()) {
      descriptor->versions = json::readRoot(text, &toRecords);
    }
    return descriptor;
  });
}

}  // namespace zentrel::vistabase::ardelivery
