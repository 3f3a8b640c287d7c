#pragma once

#include <cstdint>
#include <vector>

#include "delivery/ModelCache/ModelRecord.h"

namespace zentrel::vistabase::ardelivery {

/// The models of one version; at most one per type.
struct VersionRecord {
  std::int32_t version;             ///< The caller's number of it.
  std::vector<ModelRecord> models;  ///< In the order in which they were added.
};

}  // namespace zentrel::vistabase::ardelivery
