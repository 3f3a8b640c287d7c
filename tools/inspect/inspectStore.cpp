#include <map>
#include <set>

#include "support/util/joined.h"
#include "tools/inspect/DryStore.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

/// A finding about a model file, with what it is of which versions.
void findDamage(Report& report, const std::string& name, const std::string& text) {
  std::string uses;
  for (const Version& version : report.versions) {
    for (const Model& model : version.models) {
      if (model.name == name) {
        uses += joined(uses.empty() ? "" : ", ", printable(model.type), " of version ",
                       version.version, version.active ? " (active)" : " (not active)");
      }
    }
  }
  report.find(name, "is " + uses + ": " + text);
  report.damaged = true;
}

/// Adds the versions of a table. What was lost is a finding.
void addVersions(const VersionTable& table, Inspection& inspection) {
  Report& report = inspection.report;
  std::map<std::string, std::string> lost;
  for (const auto& each : table.versions) {
    Version version{each->number, each->number == table.active};
    std::vector<std::string>& missing = version.capabilities[table.capability.name()];
    for (const auto& [file, name] : each->files) {
      const FileStatus status = inspection.directory->status(name);
      Model model{file.type(), name, name, {}, file.sizeBytes(), file.sha256()};
      model.size = status.isRegular() ? std::optional(status.size) : std::nullopt;
      if (model.size != model.recordedSize) {
        missing.push_back(file.type());
        lost[name] = model.size
                         ? joined("has ", status.size, " bytes instead of ", file.sizeBytes())
                         : "missing";
      }
      version.models.push_back(std::move(model));
    }
    report.versions.push_back(std::move(version));
  }
  for (const auto& [name, text] : lost) {
    findDamage(report, name, text);
  }
  for (const std::string& name :
       inspection.options.verify ? std::set<std::string>() : table.damaged) {
    findDamage(report, name, "was found to have wrong bytes");
  }
}

/// Marks what an update would delete.
void makeRoom(Inspection& inspection, DryStore& store) {
  Report& report = inspection.report;
  report.budget = inspection.options.budget;
  report.begin = inspection.options.begin;
  const Versions before = store.models ? store.models->catalog.table().versions : Versions();
  std::int64_t place = 0;
  try {
    for (const std::string& name : store.makeRoom(report.begin, *report.budget)) {
      const auto found = inspection.entries.find(name);
      if (found != inspection.entries.end()) {
        found->second.evicted = ++place;
      }
    }
  } catch (const StoreError& error) {
    report.find({}, "an update would fail: " + printable(error.what()));
  }
  for (const auto& version : before) {
    if (!store.models->catalog.table().find(version->number)) {
      report.evictedVersions.push_back(version->number);
    }
  }
}

}  // namespace

void inspectStore(Inspection& inspection, DryStore& store) {
  Report& report = inspection.report;
  if (!store.content) {
    report.holds = "what was a store's";
    report.find({}, "neither the store's marker nor its table tells what it holds");
    return;
  }
  const std::vector<std::string> mends = store.open();
  report.holds = store.opened.toString();
  for (const std::string& mend : report.holder ? std::vector<std::string>() : mends) {
    report.find({}, "the next open " + mend);  // Of a running store, it would be a moment's state.
  }
  report.totalSize = store.totalBytes();
  if (store.models) {
    const VersionTable opened = store.models->catalog.table();
    const bool isKept = store.table && store.table->capability == opened.capability;
    addVersions(isKept ? *store.table : opened, inspection);
    if (inspection.options.verify) {
      const std::map<std::string, ModelFile> files = opened.filesByName();
      report.verifiedFiles = files.size();
      for (const ModelFile& damaged : store.store->verify()) {
        for (const auto& [name, file] : files) {
          if (file.sha256() == damaged.sha256()) {
            findDamage(report, name, "differs from its recorded digest");
          }
        }
      }
    }
  }
  if (inspection.options.budget) {
    makeRoom(inspection, store);
  }
}

}  // namespace zentrel::vistabase::ardelivery::inspect
