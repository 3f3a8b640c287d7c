#include "delivery/ModelCache/CacheDescriptorSerializer.h"

#include <utility>

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
  VersionRecord record{json::member(version, "version", &json::toInt32), {}};
  json::forEach(version, "models", [&record](const JsonValue& model) {
    json::requireMembers(model, {"type", "cacheKey"});
    record.models.push_back({json::member(model, "type", &json::toString),
                             json::member(model, "cacheKey", &json::toString)});
  });
  return record;
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
  return json::readDocument(text, [&text] {
    auto descriptor = std::make_unique<CacheDescriptor>();
    if (!text.empty()) {
      json::forEach(json::parse(text), "versions", [&descriptor](const JsonValue& version) {
        descriptor->versions.push_back(toRecord(version));
      });
    }
    return descriptor;
  });
}

}  // namespace zentrel::vistabase::ardelivery
