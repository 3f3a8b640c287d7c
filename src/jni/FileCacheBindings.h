#pragma once

namespace zentrel::vistabase::ardelivery {

/// Registers the natives of the managed FileCacheBasicImpl.
void registerFileCacheNatives();

}  // namespace zentrel::vistabase::ardelivery
