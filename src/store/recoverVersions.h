#pragma once

#include "store/StoreRoot.h"
#include "store/VersionTable.h"

namespace zentrel::vistabase::ardelivery {

/// What the index tells of a root that has lost its table: the versions whose files are all there
/// with the right bytes, which are read; the last one is active. Reports if there are any.
VersionTable recoverVersions(StoreRoot& root, const Capability& capability);

}  // namespace zentrel::vistabase::ardelivery
