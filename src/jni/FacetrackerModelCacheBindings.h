#pragma once

namespace zentrel::vistabase::ardelivery {

/// Registers the natives of the managed FacetrackerModelCache.
void registerFacetrackerModelCacheNatives();

}  // namespace zentrel::vistabase::ardelivery
