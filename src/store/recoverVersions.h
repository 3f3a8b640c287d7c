#pragma once

#include "store/StoreRoot.h"
#include "store/VersionTable.h"

namespace zentrel::vistabase::ardelivery {

/// Rebuilds a lost table from the index: the versions whose files all exist with the right digests,
/// the last one active. Reads the files. Reports if there are any such versions.
VersionTable recoverVersions(StoreRoot& root, const Capability& capability);

}  // namespace zentrel::vistabase::ardelivery
