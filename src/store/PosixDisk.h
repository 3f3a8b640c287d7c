#pragma once

#include <memory>
#include <string>

#include "store/IDisk.h"

namespace zentrel::vistabase::ardelivery {

/// Opens a root on the real disk. Everything is opened relative to the root's descriptor, so that
/// neither renaming the root nor planting a link in it leads elsewhere.
std::shared_ptr<IDirectory> openPosixRoot(const std::string& path);

/// The same for any directory, which must exist.
std::shared_ptr<IDirectory> openPosixDirectory(const std::string& path);

}  // namespace zentrel::vistabase::ardelivery
