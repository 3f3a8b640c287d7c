#pragma once

#include <cstdint>
#include <string>

#include "store/IDisk.h"
#include "store/StoreError.h"

namespace zentrel::vistabase::ardelivery {

/// The StoreError (NoRoom) of a root whose budget would have to be `needed` bytes, with what is
/// free on its file system.
StoreError noRoom(const std::string& message, const std::string& path, IDirectory& root,
                  std::int64_t needed, std::int64_t budget);

}  // namespace zentrel::vistabase::ardelivery
