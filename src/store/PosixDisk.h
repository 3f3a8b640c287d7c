#pragma once

#include <memory>
#include <string>

#include "store/IDisk.h"

namespace zentrel::vistabase::ardelivery {

/// The real disk: everything is reached from the descriptor of the root, so that neither a rename
/// of the root nor a link put into it leads elsewhere.
std::shared_ptr<IDirectory> openPosixRoot(const std::string& path);

}  // namespace zentrel::vistabase::ardelivery
