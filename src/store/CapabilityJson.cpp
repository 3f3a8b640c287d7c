#include "store/CapabilityJson.h"

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace zentrel::vistabase::ardelivery {

void addCapability(boost::json::object& members, const Capability& capability) {
  members["capability"] = capability.name();
  members["types"] = boost::json::array(capability.types().begin(), capability.types().end());
}

Capability capabilityOf(const JsonValue& document) {
  std::vector<std::string> types;
  json::forEach(document, "types",
                [&types](const JsonValue& type) { types.push_back(json::toString(type)); });
  try {
    return Capability::of(json::member(document, "capability", &json::toString), std::move(types));
  } catch (const std::invalid_argument& error) {
    throw json::Error(error.what());
  }
}

}  // namespace zentrel::vistabase::ardelivery
