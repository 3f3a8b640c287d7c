#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "store/EntryDirectory.h"
#include "store/ModelStore.h"
#include "store/VersionTable.h"

namespace zentrel::vistabase::ardelivery {

/// What to delete to make room.
struct RoomPlan {
  Versions versions = {};
  std::vector<std::string> entries = {};  ///< Names of entries of no version.
  std::int64_t bytes = 0;                 ///< What that frees; may be less than is lacking.
};

/// Plans how to free `lacking` bytes: the oldest inactive versions go first, then entries of no
/// version and, if `room` allows it and nothing else is enough, the active version. Files of these
/// names are kept. Linear in the number of files.
RoomPlan planRoom(const VersionTable& table, EntryDirectory& entries, std::int64_t lacking,
                  const std::set<std::string>& kept, Room room);

}  // namespace zentrel::vistabase::ardelivery
