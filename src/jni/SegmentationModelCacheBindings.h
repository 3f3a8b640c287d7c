#pragma once

namespace zentrel::vistabase::ardelivery {

/// Registers the natives of the managed SegmentationModelCache.
void registerSegmentationModelCacheNatives();

}  // namespace zentrel::vistabase::ardelivery
