#pragma once

#include <cstdint>
#include <vector>

#include "delivery/ModelCache/ModelRecord.h"

namespace zentrel::vistabase::ardelivery {

/// The models of one version; at most one per type.
struct VersionRecord {
  std::int32_t version;
  std::vector<ModelRecord> models;
};

}  // namespace zentrel::vistabase::ardelivery
