#include "delivery/ModelCache/CapabilityModelTypeSerializer.h"

#include <stdexcept>
#include <utility>

namespace zentrel::vistabase::ardelivery {

CapabilityModelTypeSerializer::CapabilityModelTypeSerializer(ModelTypeNames names)
    : names_(std::move(names)) {}

int CapabilityModelTypeSerializer::deserialize(const std::string& name) const {
  for (const auto& [type, typeName] : names_) {
    if (typeName == name) {
      return type;
    }
  }
  throw std::runtime_error("Could not deserialize type: " + name);
}

int CapabilityModelTypeSerializer::deserializeChecked(const std::string& name) const {
  try {
    return deserialize(name);
  } catch (...) {
    throw std::runtime_error("Unknown serialized type: " + name);
  }
}

}  // namespace zentrel::vistabase::ardelivery
