#include "tools/inspect/inspect.h"

#include <algorithm>
#include <boost/filesystem/operations.hpp>
#include <exception>
#include <map>
#include <memory>
#include <stdexcept>
#include <unordered_set>
#include <utility>

#include "delivery/FileCache/CacheEvictor.h"
#include "delivery/FileCache/CacheKey.h"
#include "delivery/FileCache/CacheMetadata.h"
#include "delivery/FileCache/CacheMetadataFilesystemSynchronizer.h"
#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/FileCache/recoverMetadata.h"
#include "delivery/ModelCache/VersionedModelCacheImpl.h"
#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"
#include "tools/inspect/Terminal.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

namespace fs = boost::filesystem;

/// Without a trace of a cache, a folder is more likely one that was named by mistake. An empty one
/// is a cache that nobody has used yet.
void requireCache(const fs::path& root, bool force) {
  FilesystemOperations filesystem;
  const std::string quoted = "'" + root.string() + "'";
  if (!filesystem.exists(root)) {
    throw std::runtime_error("there is no folder " + quoted);
  }
  if (!fs::is_directory(root)) {
    throw std::runtime_error(quoted + " is no folder; name the one that holds metadata.json");
  }
  const auto names = filesystem.listDirectory(root);
  const bool hasTrace = names.count(kMetadataName) != 0 || names.count(kDamagedMetadataName) != 0 ||
                        names.count(kExtraName) != 0 ||
                        names.count(VersionedModelCacheImpl::kIndexKey) != 0;
  if (!force && !hasTrace && !names.empty()) {
    throw std::runtime_error(
        quoted +
        " does not look like a cache: it has no metadata.json (--force shows it all the same)");
  }
}

OwnFile readMetadata(const fs::path& root, std::unique_ptr<ICacheMetadata>& metadata) {
  CacheMetadataSerializer serializer;
  OwnFile file = readOwnFile(root, kMetadataName, [&](const std::string& text) {
    metadata = serializer.deserialize(text).release();
  });
  if (!file.present || file.damage) {
    metadata = std::make_unique<CacheMetadata>();
  }
  return file;
}

/// Builds the list of entries, by name, out of the records and of what lies on disk.
class Entries {
 public:
  explicit Entries(fs::path root) : root_(std::move(root)) {}

  void addRecords(const ICacheMetadata& stored) {
    for (const auto& [name, record] : stored.getEntries()) {
      Entry& entry = at(name);
      entry.recordedSize = record.size;
      entry.lastAccess = record.lastAccess;
    }
  }

  /// `reconciled` has exactly the records of what lies on disk.
  void addFiles(const ICacheMetadata& reconciled) {
    for (const auto& [name, record] : reconciled.getEntries()) {
      Entry& entry = at(name);
      entry.onDisk = true;
      entry.sizeOnDisk = measure(root_ / name);
    }
  }

  void addExtras(std::vector<std::string>& findings) {
    const fs::path folder = root_ / kExtraName;
    if (!filesystem_.exists(folder)) {
      return;
    }
    for (const std::string& name : filesystem_.listDirectory(folder)) {
      const auto found = entries_.find(name);
      if (found == entries_.end()) {
        findings.push_back("extra/" + printable(name) + " belongs to no entry");
      } else {
        found->second.extraSize = measure(folder / name);
      }
    }
  }

  std::vector<Entry> take() {
    std::vector<Entry> list;
    for (auto& [name, entry] : entries_) {
      list.push_back(std::move(entry));
    }
    return list;
  }

 private:
  Entry& at(const std::string& name) {
    Entry& entry = entries_[name];
    entry.name = name;
    return entry;
  }

  std::optional<std::uint64_t> measure(const fs::path& path) {
    try {
      return filesystem_.getSize(path);
    } catch (const std::exception&) {
      return std::nullopt;
    }
  }

  fs::path root_;
  FilesystemOperations filesystem_;
  std::map<std::string, Entry> entries_;
};

/// The records with which the cache itself would go on. This only reads; it is the cache that saves
/// the result.
std::unique_ptr<ICacheMetadata> reconcile(const fs::path& root,
                                          std::unique_ptr<ICacheMetadata> stored) {
  CacheMetadataFilesystemSynchronizer synchronizer(quovix::make_shared_ref<FilesystemOperations>());
  try {
    return synchronizer.synchronize(std::move(stored), root, {kMetadataName, kExtraName}).metadata;
  } catch (const std::exception& error) {
    throw std::runtime_error(std::string("the cache itself fails on this root: ") + error.what());
  }
}

void findInEntry(const Entry& entry, std::vector<std::string>& findings) {
  const std::string name = printable(entry.name);
  if (!entry.onDisk) {
    findings.push_back(name + " is recorded, but not on disk");
  } else if (!entry.recordedSize) {
    findings.push_back(name + " is on disk, but not recorded");
  } else if (!entry.sizeOnDisk) {
    findings.push_back(name + " cannot be measured");
  } else if (static_cast<std::int64_t>(*entry.sizeOnDisk) != *entry.recordedSize &&
             // Nobody commits the index: its recorded size is the one it had when it was adopted.
             entry.name != VersionedModelCacheImpl::kIndexKey) {
    findings.push_back(name + " has " + std::to_string(*entry.sizeOnDisk) + " bytes, but " +
                       std::to_string(*entry.recordedSize) + " are recorded");
  }
}

void findInMetadata(Report& report) {
  std::vector<std::string>& findings = report.findings;
  if (report.metadata.damage) {
    findings.push_back("metadata.json is damaged: " + report.metadata.damage->describe());
  } else if (report.metadata.present) {
    for (const Entry& entry : report.entries) {
      findInEntry(entry, findings);
    }
  } else if (!report.entries.empty()) {
    findings.emplace_back("there is no metadata.json: no entry is recorded");
  }
}

void judgeBudget(std::int64_t budget, const ICacheMetadata& reconciled, Report& report) {
  report.budget = budget;
  report.evictedNext = CacheEvictor(budget).selectKeysToEvict(reconciled);
  if (report.totalSize > budget) {
    report.findings.push_back("the total exceeds the budget by " +
                              std::to_string(wrappingSubtract(report.totalSize, budget)) +
                              " bytes");
  }
}

}  // namespace

OwnFile readOwnFile(const fs::path& root, const std::string& name,
                    const std::function<void(const std::string&)>& deserialize) {
  FilesystemOperations filesystem;
  const fs::path path = root / name;
  OwnFile file;
  file.present = filesystem.exists(path);
  if (!file.present) {
    return file;
  }
  if (!filesystem.isFile(path)) {
    file.damage = Damage{"not a regular file"};
    return file;
  }
  std::string text;
  try {
    text = FileIO().readFile(path.string());
  } catch (const std::exception&) {
    throw std::runtime_error("'" + path.string() + "' cannot be read");
  }
  try {
    deserialize(text);
  } catch (const json::Error& error) {
    file.damage = damageOf(error, text);
  }
  return file;
}

Report inspect(const std::string& root, std::optional<std::int64_t> budget, bool force) {
  const fs::path path(root);
  requireCache(path, force);
  Report report;
  report.root = root;
  std::unique_ptr<ICacheMetadata> stored;
  report.metadata = readMetadata(path, stored);

  Entries entries(path);
  entries.addRecords(*stored);
  const auto reconciled = reconcile(path, std::move(stored));
  entries.addFiles(*reconciled);
  std::vector<std::string> strayExtras;
  entries.addExtras(strayExtras);
  report.entries = entries.take();
  report.totalSize = reconciled->getTotalSize();

  findInMetadata(report);
  std::sort(strayExtras.begin(), strayExtras.end());
  std::move(strayExtras.begin(), strayExtras.end(), std::back_inserter(report.findings));
  inspectIndex(path, report);
  if (budget) {
    judgeBudget(*budget, *reconciled, report);
  }
  return report;
}

std::string recover(const std::string& root, bool force) {
  const fs::path path(root);
  requireCache(path, force);
  return recoverMetadata(root) == MetadataRecovery::SetAside
             ? (path / kDamagedMetadataName).string()
             : std::string();
}

}  // namespace zentrel::vistabase::ardelivery::inspect
