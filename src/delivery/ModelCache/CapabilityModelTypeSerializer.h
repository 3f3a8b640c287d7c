#pragma once

#include <string>

#include "delivery/ModelCache/CapabilityModel.h"

namespace zentrel::vistabase::ardelivery {

/// The names of a capability's model types. Immutable.
class CapabilityModelTypeSerializer {
 public:
  explicit CapabilityModelTypeSerializer(ModelTypeNames names);

  /// Returns the type with exactly that name. Throws std::runtime_error "Could not deserialize
  /// type: NAME" if there is none.
  int deserialize(const std::string& name) const;

  /// Like `deserialize`, for a name from a caller: any failure is std::runtime_error "Unknown
  /// serialized type: NAME".
  int deserializeChecked(const std::string& name) const;

 private:
  const ModelTypeNames names_;
};

}  // namespace zentrel::vistabase::ardelivery
