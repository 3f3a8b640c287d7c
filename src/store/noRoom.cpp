#include "store/noRoom.h"

namespace zentrel::vistabase::ardelivery {

StoreError noRoom(const std::string& message, const std::string& path, IDirectory& root,
                  std::int64_t needed, std::int64_t budget) {
  std::int64_t free = -1;
  try {
    free = root.freeBytes();
  } catch (const StoreError&) {
    // The budget is what matters.
  }
  return {StoreError::Reason::NoRoom, message, path, 0, StoreError::Room{needed, budget, free}};
}

}  // namespace zentrel::vistabase::ardelivery
