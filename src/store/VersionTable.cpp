#include "store/VersionTable.h"

#include <algorithm>
#include <stdexcept>

#include "store/fileTrees.h"

namespace zentrel::vistabase::ardelivery {
namespace {

/// The versions that are not among the excluded ones. Linear, since damaged tables may be huge.
Versions allBut(const Versions& versions, const Versions& excluded) {
  const std::set<std::shared_ptr<const Version>> excludedSet(excluded.begin(), excluded.end());
  Versions rest;
  for (const auto& version : versions) {
    if (excludedSet.count(version) == 0) {
      rest.push_back(version);
    }
  }
  return rest;
}

/// Sorts the files by type. Throws std::invalid_argument unless there is one of each.
std::vector<ModelFile> inOrder(const std::vector<ModelFile>& files, const Capability& capability) {
  std::map<std::string, const ModelFile*> byType;
  for (const ModelFile& file : files) {
    if (!capability.hasType(file.type())) {
      throw std::invalid_argument("not a type of " + capability.toString() + ": " +
                                  file.toString());
    }
    if (!byType.emplace(file.type(), &file).second) {
      throw std::invalid_argument("more than one file of a type: " + file.toString());
    }
  }
  std::vector<ModelFile> ordered;
  for (const std::string& type : capability.types()) {
    const auto found = byType.find(type);
    if (found == byType.end()) {
      throw std::invalid_argument("no file of type " + type);
    }
    ordered.push_back(*found->second);
  }
  return ordered;
}

}  // namespace

std::set<std::string> Version::names() const {
  std::set<std::string> names;
  for (const VersionFile& file : files) {
    names.insert(file.name);
  }
  return names;
}

std::int64_t Version::bytes(const Version* other) const {
  std::map<std::string, std::int64_t> sizes;
  for (const Version* version : {this, other == nullptr ? this : other}) {
    for (const VersionFile& file : version->files) {
      sizes[file.name] = file.file.sizeBytes();
    }
  }
  std::int64_t sum = 0;
  for (const auto& [name, size] : sizes) {
    sum = addSizes(sum, size);
  }
  return sum;
}

std::shared_ptr<const Version> VersionTable::find(int number) const {
  for (const auto& version : versions) {
    if (version->number == number) {
      return version;
    }
  }
  return nullptr;
}

std::shared_ptr<const Version> VersionTable::activeVersion() const {
  return active ? find(*active) : nullptr;
}

std::map<std::string, ModelFile> VersionTable::filesByName() const {
  std::map<std::string, ModelFile> files;
  for (const auto& version : versions) {
    for (const VersionFile& file : version->files) {
      files.emplace(file.name, file.file);
    }
  }
  return files;
}

std::set<std::string> VersionTable::namesWithout(const Versions& excluded) const {
  std::set<std::string> names;
  for (const auto& version : allBut(versions, excluded)) {
    names.merge(version->names());
  }
  return names;
}

std::set<std::string> VersionTable::namesOnlyOf(const Versions& owners,
                                                const std::set<std::string>& kept) const {
  const std::set<std::string> others = namesWithout(owners);
  std::set<std::string> names;
  for (const auto& version : owners) {
    for (const VersionFile& file : version->files) {
      if (others.count(file.name) == 0 && kept.count(file.name) == 0) {
        names.insert(file.name);
      }
    }
  }
  return names;
}

VersionTable VersionTable::with(const std::shared_ptr<const Version>& version,
                                bool isActive) const {
  VersionTable table = *this;
  table.versions.erase(
      std::remove(table.versions.begin(), table.versions.end(), find(version->number)),
      table.versions.end());
  table.versions.push_back(version);
  if (isActive) {
    table.active = version->number;
  }
  return table.withDamaged(damaged);
}

VersionTable VersionTable::without(const Versions& removed) const {
  VersionTable table{capability, allBut(versions, removed), active, {}};
  if (!table.activeVersion()) {
    table.active.reset();
  }
  return table.withDamaged(damaged);
}

VersionTable VersionTable::withActive(std::optional<int> number) const {
  VersionTable table = *this;
  table.active = number;
  return table;
}

VersionTable VersionTable::withDamaged(const std::set<std::string>& names) const {
  VersionTable table = *this;
  table.damaged.clear();
  for (const std::string& name : namesWithout({})) {
    if (names.count(name) != 0) {
      table.damaged.insert(name);
    }
  }
  return table;
}

Version VersionTable::plan(int number, const std::vector<ModelFile>& files) const {
  std::map<std::string, std::string> namesByDigest;
  std::map<std::string, std::int64_t> sizesByDigest;
  for (const auto& [name, file] : filesByName()) {
    namesByDigest.emplace(file.sha256(), name);
    sizesByDigest.emplace(file.sha256(), file.sizeBytes());
  }
  Version version{number, {}};
  for (const ModelFile& file : inOrder(files, capability)) {
    const std::string& digest = file.sha256();
    if (sizesByDigest.emplace(digest, file.sizeBytes()).first->second != file.sizeBytes()) {
      throw std::invalid_argument("different sizes for one digest: " + file.toString());
    }
    const auto name = namesByDigest.emplace(digest, digest + '-' + file.type()).first;
    version.files.push_back({file, name->second});
  }
  return version;
}

}  // namespace zentrel::vistabase::ardelivery
