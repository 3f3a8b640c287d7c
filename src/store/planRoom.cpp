#include "store/planRoom.h"

#include <map>
#include <memory>

#include "store/fileTrees.h"

namespace zentrel::vistabase::ardelivery {

RoomPlan planRoom(const VersionTable& table, EntryDirectory& entries, std::int64_t lacking,
                  const std::set<std::string>& kept, Room room) {
  std::map<std::string, int> users;  // How many of the remaining versions have a file.
  for (const auto& version : table.versions) {
    for (const std::string& name : version->names()) {
      ++users[name];
    }
  }
  RoomPlan plan;
  const auto add = [&](const std::shared_ptr<const Version>& version) {
    plan.versions.push_back(version);
    for (const std::string& name : version->names()) {
      if (--users[name] == 0 && kept.count(name) == 0) {
        plan.bytes = addSizes(plan.bytes, entries.size(name));
      }
    }
  };
  const auto active = table.activeVersion();
  for (const auto& version : table.versions) {
    if (plan.bytes < lacking && version != active) {
      add(version);
    }
  }
  plan.entries = entries.leastRecentlyUsed(lacking - plan.bytes, [&](const std::string& name) {
    return users.count(name) != 0 || kept.count(name) != 0;
  });
  for (const std::string& name : plan.entries) {
    plan.bytes = addSizes(plan.bytes, entries.size(name));
  }
  if (plan.bytes < lacking && room == Room::GiveUpActive && active) {
    add(active);
  }
  return plan;
}

}  // namespace zentrel::vistabase::ardelivery
