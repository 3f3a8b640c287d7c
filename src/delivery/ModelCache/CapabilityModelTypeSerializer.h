#pragma once

#include <string>

#include "delivery/ModelCache/CapabilityModel.h"

namespace zentrel::vistabase::ardelivery {

/// The names of a capability's model types. Immutable.
class CapabilityModelTypeSerializer {
 public:
  /// Over the names of one capability.
  explicit CapabilityModelTypeSerializer(ModelTypeNames names);

  /// The type of that name, compared byte by byte; std::runtime_error "Could not deserialize type:
  /// NAME" if there is none.
  int deserialize(const std::string& name) const;

  /// As `deserialize`, for a name that a caller gives: std::runtime_error "Unknown serialized type:
  /// NAME" whatever failed.
  int deserializeChecked(const std::string& name) const;

 private:
  const ModelTypeNames names_;
};

}  // namespace zentrel::vistabase::ardelivery
