#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "store/Capability.h"

namespace zentrel::vistabase::ardelivery {

/// A file of a version, and its name in the root.
struct VersionFile {
  ModelFile file;
  std::string name;
};

/// A version: one file of each type, in the capability's order. Files with the same content share a
/// name.
struct Version {
  int number;
  std::vector<VersionFile> files;

  std::set<std::string> names() const;
  /// The size of its files and, if not null, those of `other`, in bytes. Each name counts once.
  std::int64_t bytes(const Version* other = nullptr) const;
};

using Versions = std::vector<std::shared_ptr<const Version>>;

/// The complete versions of a root, and which of them is active. Immutable by convention: functions
/// return a changed copy.
struct VersionTable {
  Capability capability;
  Versions versions = {};              ///< The most recently completed or activated last.
  std::optional<int> active = {};      ///< Always one of them.
  std::set<std::string> damaged = {};  ///< Names of files found to have wrong bytes.

  /// The version with that number, or null.
  std::shared_ptr<const Version> find(int number) const;
  std::shared_ptr<const Version> activeVersion() const;

  /// The files of all versions, by name.
  std::map<std::string, ModelFile> filesByName() const;
  /// The names of the files of all versions except `excluded`.
  std::set<std::string> namesWithout(const Versions& excluded) const;
  /// The names of the files that only the versions `owners` have, except those kept.
  std::set<std::string> namesOnlyOf(const Versions& owners,
                                    const std::set<std::string>& kept) const;

  /// Adds the version at the end, replacing the one with its number.
  VersionTable with(const std::shared_ptr<const Version>& version, bool isActive) const;
  VersionTable without(const Versions& removed) const;
  VersionTable withActive(std::optional<int> number) const;
  /// Replaces the names of files with wrong bytes.
  VersionTable withDamaged(const std::set<std::string>& names) const;

  /// Plans a version of these files, which reuse the names of existing files with the same content.
  /// Throws std::invalid_argument unless there is one of each type.
  Version plan(int number, const std::vector<ModelFile>& files) const;
};

}  // namespace zentrel::vistabase::ardelivery
