#include <algorithm>
#include <boost/filesystem/operations.hpp>
#include <set>
#include <stdexcept>
#include <unordered_set>

#include "delivery/FileCache/ICacheMetadata.h"
#include "delivery/FileNames.h"
#include "delivery/Storage/FilesystemOperations.h"
#include "store/PosixDisk.h"
#include "store/fileTrees.h"
#include "support/util/joined.h"
#include "tools/inspect/DryStore.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

namespace fs = boost::filesystem;

enum class Sort { Entry, Own, Unfinished, Other };

Sort sortOf(const std::string& name, bool isStore) {
  if (isEntryName(name) || (name == kIndexName && !isStore)) {
    return Sort::Entry;
  }
  const bool isOwn = isReserved(name) || name == kDamagedMetadataName || name == kTableName ||
                     name == kMarkerName || name == kLockName;
  const bool isUnfinished = beginsWith(name, kPartPrefix) || beginsWith(name, kResumePrefix) ||
                            beginsWith(name, kNewPrefix);
  return isOwn ? Sort::Own : isUnfinished ? Sort::Unfinished : Sort::Other;
}

std::unordered_set<std::string> namesIn(const fs::path& folder) {
  if (!fs::is_directory(folder)) {
    throw std::runtime_error("there is no folder '" + folder.string() + "'");
  }
  return FilesystemOperations().listDirectory(folder);
}

bool isRoot(const std::unordered_set<std::string>& names) {
  return std::any_of(names.begin(), names.end(),
                     [](const std::string& name) { return sortOf(name, true) == Sort::Own; });
}

/// Adds what lies on disk.
void addFiles(Inspection& inspection, const std::unordered_set<std::string>& names, bool isStore) {
  Report& report = inspection.report;
  for (const std::string& name : names) {
    const FileStatus status = inspection.directory->status(name);
    Entry file{name, isStore ? "present" : "only on disk"};
    file.sizeOnDisk = isStore ? sizeOf(*inspection.directory, name, status)
                              : measure(inspection.report.root + '/' + name);
    report.size = wrappingAdd(report.size, file.size());
    const Sort sort = sortOf(name, isStore);
    if (isStore || sort != Sort::Entry) {
      file.lastAccess = status.modified / 1'000'000;
    }
    if (sort == Sort::Entry) {
      inspection.entries[name] = file;
    } else if (sort != Sort::Own) {
      file.state = sort == Sort::Other ? "other" : report.holder ? "running" : "unfinished";
      report.others.push_back(file);
    }
    if (file.state == "unfinished") {
      report.find(name, "was begun and not ended");
    }
  }
}

void addExtras(Inspection& inspection) {
  const std::string folder = joined(inspection.report.root, "/", kExtraName, "/");
  try {
    for (const std::string& name : namesIn(folder)) {
      const auto found = inspection.entries.find(name);
      if (found == inspection.entries.end()) {
        inspection.report.find(joined(kExtraName, "/", name), "belongs to no entry");
      } else {
        found->second.extraSize = measure(folder + name);
      }
    }
  } catch (const std::exception&) {
    if (!inspection.directory->status(kExtraName).isAbsent()) {
      inspection.report.find(kExtraName, "is no folder that can be read: there are no extra bytes");
    }
  }
}

/// Tells the entries their versions, and these their sizes.
void matchFiles(Inspection& inspection) {
  for (Version& version : inspection.report.versions) {
    std::set<std::string_view> counted;
    for (const Model& model : version.models) {
      // The key a/b is the file b in the folder a%, which is the entry.
      const auto found = inspection.entries.find(model.name.substr(0, model.name.find('/')));
      if (found == inspection.entries.end()) {
        continue;
      }
      std::vector<std::int32_t>& versions = found->second.versions;
      if (versions.empty() || versions.back() != version.version) {
        versions.push_back(version.version);
      }
      if (model.size && counted.insert(model.name).second) {
        version.size = wrappingAdd(version.size, *model.size);
      }
    }
  }
}

void takeEntries(Inspection& inspection) {
  Report& report = inspection.report;
  for (auto& [name, entry] : inspection.entries) {
    report.entries.push_back(std::move(entry));
  }
  const auto isBefore = [&sort = inspection.options.sort](const Entry& left, const Entry& right) {
    return sort == "size"  ? left.size() > right.size()
           : sort == "age" ? left.lastAccess < right.lastAccess
                           : left.name < right.name;
  };
  std::stable_sort(report.entries.begin(), report.entries.end(), isBefore);
  std::stable_sort(report.others.begin(), report.others.end(), isBefore);
}

}  // namespace

std::optional<std::int64_t> measure(const std::string& path) {
  try {
    return static_cast<std::int64_t>(FilesystemOperations().getSize(path));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::vector<std::string> rootsIn(const std::string& folder, bool force) {
  const auto names = namesIn(folder);
  if (force || names.empty() || isRoot(names)) {
    return {folder};
  }
  std::vector<std::string> roots;
  for (const std::string& name : names) {
    const fs::path path = fs::path(folder) / name;
    try {
      if (isRoot(namesIn(path))) {
        roots.push_back(path.string());
      }
    } catch (const std::exception&) {
      // A file, or a folder that is closed to the caller.
    }
  }
  if (roots.empty()) {
    throw std::runtime_error("'" + folder + "' does not look like a cache (--force shows it)");
  }
  std::sort(roots.begin(), roots.end());
  return roots;
}

Report inspect(const std::string& root, const Options& options) {
  const auto names = namesIn(root);
  Inspection inspection{options, openPosixDirectory(root)};
  inspection.report.root = root;
  inspection.report.holder = findHolder(*inspection.directory);
  DryStore store(root);
  const bool isStore = store.isStore || names.count(kMarkerName) + names.count(kTableName) != 0;
  addFiles(inspection, names, isStore);
  if (isStore) {
    inspectStore(inspection, store);
  } else {
    inspectCache(inspection);
  }
  addExtras(inspection);
  matchFiles(inspection);
  takeEntries(inspection);
  return std::move(inspection.report);
}

}  // namespace zentrel::vistabase::ardelivery::inspect
