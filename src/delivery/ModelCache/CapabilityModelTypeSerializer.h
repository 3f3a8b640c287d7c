#pragma once

#include <string>
#include <unordered_map>

namespace zentrel::vistabase::ardelivery {

/// The names of a capability's model types. Immutable.
class CapabilityModelTypeSerializer {
 public:
  /// From each type to its serialized name.
  using Table = std::unordered_map<int, std::string>;

  /// Over the names of one capability.
  explicit CapabilityModelTypeSerializer(Table names);

  /// The type of that name, compared byte by byte; std::runtime_error "Could not deserialize type:
  /// NAME" if there is none.
  int deserialize(const std::string& name) const;

  /// As `deserialize`, for a name that a caller gives: std::runtime_error "Unknown serialized type:
  /// NAME" whatever failed.
  int deserializeChecked(const std::string& name) const;

 private:
  const Table names_;
};

}  // namespace zentrel::vistabase::ardelivery
