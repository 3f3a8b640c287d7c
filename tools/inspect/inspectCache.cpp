#include <algorithm>
#include <boost/filesystem/operations.hpp>
#include <exception>
#include <set>

#include "delivery/FileCache/CacheEvictor.h"
#include "delivery/FileCache/CacheKey.h"
#include "delivery/FileCache/CacheMetadata.h"
#include "delivery/FileCache/CacheMetadataFilesystemSynchronizer.h"
#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/FileNames.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"
#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"
#include "store/Capability.h"
#include "support/json/JsonValue.h"
#include "support/util/FunctionRef.h"
#include "support/util/joined.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

namespace fs = boost::filesystem;

/// Reads one of the files in which a cache keeps its own affairs. Returns "missing", "present" or,
/// as a finding too, what is wrong with it.
std::string readOwnFile(Report& report, const std::string& name,
                        FunctionRef<void(const std::string&)> read) {
  const std::string path = report.root + '/' + name;
  boost::system::error_code error;
  const fs::file_type type = fs::status(path, error).type();
  std::string state = type == fs::file_not_found ? "missing" : "cannot be read";
  try {
    if (type == fs::regular_file) {
      read(FileIO().readFile(path));
      state = "present";
    }
  } catch (const json::Error& failure) {
    const std::string& place = failure.path();
    state = printable(joined("is damaged: ", place, place.empty() ? "" : ": ", failure.cause()));
  } catch (const std::exception& failure) {
    state += printable(joined(": ", failure.what()));
  }
  if (state != "missing" && state != "present") {
    report.find(name, state);
  }
  return state;
}

void readIndex(Inspection& inspection) {
  Report& report = inspection.report;
  auto descriptor = std::make_unique<CacheDescriptor>();
  report.index = readOwnFile(report, kIndexName, [&](const std::string& text) {
    descriptor = CacheDescriptorSerializer().deserialize(text);
  });
  for (const VersionRecord& record : descriptor->versions) {
    Version& version = report.versions.emplace_back(Version{record.version});
    for (const auto& [type, key] : record.models) {
      Model model{type, key, ""};
      if (!isRefused(key) && isEntryName(key)) {  // Else the file cache has no such file.
        model.name = escapeKey(key);
        model.size = measure(report.root + '/' + model.name);
      }
      version.models.push_back(std::move(model));
    }
  }
}

/// Adds what of the known capabilities the version has.
void judgeVersion(Version& version, Report& report) {
  std::set<std::string> unknown;
  for (const Model& model : version.models) {
    unknown.insert(model.type);
  }
  for (const Capability& capability : {Capability::faceTracking(), Capability::segmentation()}) {
    std::vector<std::string> missing;
    std::size_t named = 0;
    for (const std::string& type : capability.types()) {
      named += unknown.erase(type);
      const bool isThere =
          std::any_of(version.models.begin(), version.models.end(),
                      [&type](const Model& model) { return model.type == type && model.size; });
      missing.insert(missing.end(), isThere ? 0 : 1, type);
    }
    if (named == 0) {
      continue;
    }
    for (const std::string& type : missing) {
      report.find({}, joined("version ", version.version, " of ", capability.name(),
                             " is not complete: no file for ", type));
    }
    version.capabilities.emplace(capability.name(), std::move(missing));
  }
  for (const std::string& type : unknown) {
    report.find(type, joined("of version ", version.version, " is no known type of model"));
  }
}

void judgeEntry(const Entry& entry, Report& report) {
  const bool isRecorded = entry.recordedSize.has_value();
  if (!entry.sizeOnDisk && entry.state != "only recorded") {
    report.find(entry.name, isRecorded ? "cannot be measured"
                                       : "cannot be measured: every operation of the cache fails");
  }
  if (report.metadata != "present") {
    return;  // That is the finding.
  }
  if (entry.state != "present") {
    report.find(entry.name,
                isRecorded ? "is recorded, but not on disk" : "is on disk, but not recorded");
  } else if (entry.sizeOnDisk && entry.sizeOnDisk != entry.recordedSize &&
             // Nobody commits the index: its recorded size is the one when it was adopted.
             entry.name != kIndexName) {
    report.find(entry.name, joined("has ", *entry.sizeOnDisk, " bytes, but ", *entry.recordedSize,
                                   " are recorded"));
  }
}

}  // namespace

void inspectCache(Inspection& inspection) {
  Report& report = inspection.report;
  std::unique_ptr<ICacheMetadata> records = std::make_unique<CacheMetadata>();
  report.metadata = readOwnFile(report, kMetadataName, [&records](const std::string& text) {
    records = CacheMetadataSerializer().deserialize(text).release();
  });
  for (const auto& [name, record] : records->getEntries()) {
    Entry& entry = inspection.entries.try_emplace(name, Entry{name}).first->second;
    entry.state = entry.state.empty() ? "only recorded" : "present";
    entry.recordedSize = record.size;
    entry.lastAccess = record.lastAccess;
  }
  std::unordered_set<std::string> ignored{kMetadataName, kExtraName};
  for (const auto& [name, entry] : inspection.entries) {
    judgeEntry(entry, report);
    if (entry.state != "only recorded" && !entry.sizeOnDisk) {
      ignored.insert(name);
    }
  }
  if (report.metadata == "missing" && !inspection.entries.empty()) {
    report.find({}, "there is no metadata.json: no entry is recorded");
  }
  // What the cache itself would make of it.
  CacheMetadataFilesystemSynchronizer synchronizer(quovix::make_shared_ref<FilesystemOperations>());
  const auto reconciled =
      synchronizer.synchronize(std::move(records), report.root, ignored).metadata;
  report.totalSize = reconciled->getTotalSize();
  if (const auto& budget = report.budget = inspection.options.budget) {
    std::int64_t place = 0;
    for (const std::string& name : CacheEvictor(*budget).selectKeysToEvict(*reconciled)) {
      inspection.entries[name].evicted = ++place;
    }
    if (report.totalSize > *budget) {
      const std::int64_t over = wrappingSubtract(report.totalSize, *budget);
      report.find({}, joined("the total exceeds the budget by ", over, " bytes"));
    }
  }
  readIndex(inspection);
  decltype(Version::capabilities) capabilities;
  for (Version& version : report.versions) {
    judgeVersion(version, report);
    capabilities.insert(version.capabilities.begin(), version.capabilities.end());
  }
  if (capabilities.size() > 1) {
    report.find({}, "face tracking and segmentation overwrite each other's versions in one index");
  }
}

}  // namespace zentrel::vistabase::ardelivery::inspect
