#include <sys/stat.h>

#include <algorithm>
#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/operations.hpp>
#include <exception>
#include <memory>
#include <set>
#include <stdexcept>
#include <unordered_set>

#include "delivery/FileCache/CacheEvictor.h"
#include "delivery/FileCache/CacheKey.h"
#include "delivery/FileCache/CacheMetadata.h"
#include "delivery/FileCache/CacheMetadataFilesystemSynchronizer.h"
#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/FileNames.h"
#include "delivery/ModelCache/VersionedModelCacheImpl.h"
#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"
#include "support/json/JsonValue.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

namespace fs = boost::filesystem;

enum Sort { kEntries, kOwn, kUnfinished, kOthers };

Sort sortOf(const std::string& name) {
  const auto beginsWith = [&name](std::string_view text) { return name.rfind(text, 0) == 0; };
  if (name == kMetadataName || name == kExtraName || name == kDamagedMetadataName ||
      name == kTableName || name == ".lock") {
    return kOwn;
  }
  if (beginsWith(".part-") || beginsWith(".new-") || beginsWith(".old-extra-")) {
    return kUnfinished;
  }
  return beginsWith(".") ? kOthers : kEntries;
}

std::unordered_set<std::string> namesIn(const fs::path& folder) {
  if (!fs::is_directory(folder)) {
    throw std::runtime_error("there is no folder '" + folder.string() + "'");
  }
  return FilesystemOperations().listDirectory(folder);
}

bool isRoot(const std::unordered_set<std::string>& names) {
  return std::any_of(names.begin(), names.end(), [](const std::string& name) {
    return name == VersionedModelCacheImpl::kIndexKey || sortOf(name) == kOwn;
  });
}

/// The place and the cause, in one printable line.
std::string describe(const json::Error& error, std::string_view text) {
  constexpr std::size_t shown = 24;
  const std::string_view before = text.substr(0, error.byte().value_or(0));
  const std::string_view end = before.substr(before.size() - std::min(before.size(), shown));
  return printable((error.path().empty() ? "" : error.path() + ": ") + error.cause() +
                   (end.empty() ? "" : ", after ") + std::string(end));
}

class Inspection {
 public:
  Inspection(const std::string& root, const Options& options)
      : path_(root), options_(options), names_(namesIn(root)) {
    report_.root = root;
    report_.groups = {{"entries"}, {"the cache's own"}, {"unfinished"}, {"others"}};
  }

  Report run() {
    readRecords();
    weigh();
    readFiles();
    readExtras();
    for (auto& [name, entry] : entries_) {
      findIn(entry);
    }
    if (options_.budget) {
      judgeBudget(*options_.budget);
    }
    takeEntries();
    inspectVersions(report_, options_.verify);
    return std::move(report_);
  }

 private:
  void readRecords() {
    report_.metadata = readOwnFile(report_, kMetadataName, [this](const std::string& text) {
      stored_ = CacheMetadataSerializer().deserialize(text).release();
    });
    for (const auto& [name, record] : stored_->getEntries()) {
      entries_[name] = {name, "only recorded", record.size, record.lastAccess};
    }
  }

  /// Adds what lies on disk, and what the cache itself would make of it.
  void readFiles() {
    std::unordered_set<std::string> ignored{kMetadataName, kExtraName};
    for (const std::string& name : names_) {
      const auto record = entries_.find(name);
      const bool isRecorded = record != entries_.end();
      const Sort sort = isRecorded ? kEntries : sortOf(name);
      Entry file = isRecorded ? record->second : Entry{name};
      file.sizeOnDisk = measure((path_ / name).string());
      if (sort == kEntries) {
        file.state = isRecorded ? "present" : "only on disk";
        entries_[name] = file;
      } else if (sort != kOwn) {
        file.state = sort == kUnfinished ? "unfinished" : "other";
        boost::system::error_code error;
        file.lastAccess = fs::last_write_time(path_ / name, error) * 1000;
        report_.others.push_back(file);
      }
      if (sort == kUnfinished) {
        report_.find(name, "was begun and not ended");
      } else if (sort == kEntries && !file.sizeOnDisk) {
        report_.find(name, isRecorded ? "cannot be measured"
                                      : "cannot be measured: every operation of the cache fails");
        ignored.insert(name);
      }
    }
    CacheMetadataFilesystemSynchronizer synchronizer(
        quovix::make_shared_ref<FilesystemOperations>());
    reconciled_ = synchronizer.synchronize(std::move(stored_), path_, ignored).metadata;
    report_.totalSize = reconciled_->getTotalSize();
  }

  /// Counts all files, links among them as what they are.
  void weigh() {
    boost::system::error_code error;
    std::string name;
    fs::recursive_directory_iterator each(path_, error);
    for (; !error && each != fs::recursive_directory_iterator(); each.increment(error)) {
      struct stat status {};
      const bool isThere = ::lstat(each->path().c_str(), &status) == 0;
      name = each.depth() == 0 ? each->path().filename().string() : name;
      if (isThere && !S_ISDIR(status.st_mode) &&
          (status.st_nlink == 1 || linked_.insert({status.st_dev, status.st_ino}).second)) {
        Group& group = report_.groups[entries_.count(name) != 0 ? kEntries : sortOf(name)];
        group.size += static_cast<std::uint64_t>(status.st_size);
        ++group.files;
      }
    }
    if (error) {
      report_.find(name, "cannot be read through: " + error.message());
    }
  }

  void readExtras() {
    std::unordered_set<std::string> names;
    try {
      names = names_.count(kExtraName) == 0 ? names : namesIn(path_ / kExtraName);
    } catch (const std::exception&) {
      report_.find(kExtraName, "is no folder that can be read: there are no extra bytes");
    }
    for (const std::string& name : names) {
      const std::string path = std::string(kExtraName) + "/" + name;
      const auto found = entries_.find(name);
      if (found != entries_.end()) {
        found->second.extraSize = measure((path_ / path).string());
      } else if (name != kTableName) {
        report_.find(path, "belongs to no entry");
      }
    }
  }

  void findIn(const Entry& entry) {
    if (report_.metadata != "present") {
      return;  // That is the finding.
    }
    if (entry.state != "present") {
      report_.find(entry.name, entry.recordedSize ? "is recorded, but not on disk"
                                                  : "is on disk, but not recorded");
    } else if (entry.sizeOnDisk && entry.sizeOnDisk != entry.recordedSize &&
               // Nobody commits the index: its recorded size is the one when it was adopted.
               entry.name != VersionedModelCacheImpl::kIndexKey) {
      report_.find(entry.name, "has " + std::to_string(*entry.sizeOnDisk) + " bytes, but " +
                                   std::to_string(*entry.recordedSize) + " are recorded");
    }
  }

  void judgeBudget(std::int64_t budget) {
    report_.budget = budget;
    std::int64_t place = 0;
    for (const std::string& name : CacheEvictor(budget).selectKeysToEvict(*reconciled_)) {
      entries_[name].evicted = ++place;
    }
    if (report_.totalSize > budget) {
      report_.find({}, "the total exceeds the budget by " +
                           std::to_string(wrappingSubtract(report_.totalSize, budget)) + " bytes");
    }
  }

  void takeEntries() {
    if (report_.metadata == "missing" && !entries_.empty() && names_.count(kTableName) == 0) {
      report_.find({}, "there is no metadata.json: no entry is recorded");
    }
    for (auto& [name, entry] : entries_) {
      report_.entries.push_back(std::move(entry));
    }
    const auto isBefore = [this](const Entry& left, const Entry& right) {
      return options_.sort == "size"  ? left.size() > right.size()
             : options_.sort == "age" ? left.lastAccess < right.lastAccess
                                      : left.name < right.name;
    };
    std::stable_sort(report_.entries.begin(), report_.entries.end(), isBefore);
    std::stable_sort(report_.others.begin(), report_.others.end(), isBefore);
  }

  const fs::path path_;
  const Options& options_;
  const std::unordered_set<std::string> names_;
  Report report_;
  std::map<std::string, Entry> entries_;
  std::unique_ptr<ICacheMetadata> stored_ = std::make_unique<CacheMetadata>();
  std::unique_ptr<ICacheMetadata> reconciled_;
  std::set<std::pair<dev_t, ino_t>> linked_;
};

}  // namespace

std::optional<std::int64_t> measure(const std::string& path) {
  try {
    return static_cast<std::int64_t>(FilesystemOperations().getSize(path));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::string readOwnFile(Report& report, const std::string& name,
                        const std::function<void(const std::string&)>& read) {
  const fs::path path = fs::path(report.root) / name;
  boost::system::error_code error;
  const fs::file_type type = fs::status(path, error).type();
  if (type == fs::file_not_found) {
    return "missing";
  }
  std::string text;
  std::string state = type == fs::regular_file ? "cannot be read" : "is no file";
  try {
    if (type == fs::regular_file) {
      text = FileIO().readFile(path.string());
      state = "is damaged: ";
      read(text);
      return "present";
    }
  } catch (const json::Error& failure) {
    state += describe(failure, text);
  } catch (const std::exception& failure) {
    state += state == "is damaged: " ? failure.what() : "";
  }
  report.find(name, state);
  return state;
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
  return Inspection(root, options).run();
}

}  // namespace zentrel::vistabase::ardelivery::inspect
