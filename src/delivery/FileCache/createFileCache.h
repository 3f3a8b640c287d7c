#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "delivery/FileCache/IFileCache.h"

namespace zentrel::vistabase::ardelivery {

/// A file cache over `root` with a budget of `maxSize` bytes. None of its operations throws: a
/// failure is reported as one soft error and answered with a neutral result. Touches no file.
std::shared_ptr<IFileCache> createFileCache(const std::string& root, std::int64_t maxSize);

}  // namespace zentrel::vistabase::ardelivery
