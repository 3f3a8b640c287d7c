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

/// A file of a version, and the name under which its bytes lie in the root.
struct VersionFile {
  ModelFile file;
  std::string name;
};

/// A version: one file of each type, in the order of the capability. Several files may share a
/// name.
struct Version {
  int number;
  std::vector<VersionFile> files;

  std::set<std::string> names() const;
  /// Bytes of its files and, if `other` is not null, of that one's, each name counted once.
  std::int64_t bytes(const Version* other = nullptr) const;
};

using Versions = std::vector<std::shared_ptr<const Version>>;

/// The complete versions of a root, and which of them is active. A value: what changes is a copy.
struct VersionTable {
  Capability capability;
  Versions versions = {};              ///< The one that was completed or activated last comes last.
  std::optional<int> active = {};      ///< Always one of them.
  std::set<std::string> damaged = {};  ///< Names of files that were found to have wrong bytes.

  /// The version of that number, or null.
  std::shared_ptr<const Version> find(int number) const;
  std::shared_ptr<const Version> activeVersion() const;

  /// The files of all versions by their names.
  std::map<std::string, ModelFile> filesByName() const;
  /// The names of the files of versions other than `gone`.
  std::set<std::string> namesWithout(const Versions& gone) const;
  /// The names of files that no version but `gone` has, and that are not kept.
  std::set<std::string> namesOnlyOf(const Versions& gone, const std::set<std::string>& kept) const;

  /// With the version as the last one, in place of the one of its number.
  VersionTable with(const std::shared_ptr<const Version>& version, bool isActive) const;
  VersionTable without(const Versions& gone) const;
  VersionTable withActive(std::optional<int> number) const;
  /// With other files having wrong bytes.
  VersionTable withDamaged(std::set<std::string> names) const;

  /// A version of these files, under the names of those that have their bytes already. Throws
  /// std::invalid_argument unless there is one of each type.
  Version plan(int number, const std::vector<ModelFile>& files) const;
};

}  // namespace zentrel::vistabase::ardelivery
