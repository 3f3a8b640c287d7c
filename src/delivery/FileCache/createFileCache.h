#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "delivery/FileCache/IFileCache.h"

namespace zentrel::vistabase::ardelivery {

/// Creates a file cache over `root` with a budget of `maxSize` bytes. None of its operations
/// throws: each failure is reported as one soft error, and a neutral result returned. Does no I/O.
std::shared_ptr<IFileCache> createFileCache(const std::string& root, std::int64_t maxSize);

}  // namespace zentrel::vistabase::ardelivery
