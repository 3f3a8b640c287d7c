#pragma once

#include <string_view>

/// The names of all files below a root that are not entries.
namespace zentrel::vistabase::ardelivery {

// Of the file cache and the model caches, directly below the root.
constexpr const char* kMetadataName = "metadata.json";
constexpr const char* kExtraName = "extra";
constexpr const char* kIndexName = "versioned_index";  ///< An entry; its key is the same.

/// What a metadata file that cannot be read is renamed to.
constexpr const char* kDamagedMetadataName = ".metadata.json.damaged";

// Of the stores. All of them begin with a dot, and so are no entries.
constexpr const char* kLockName = ".lock";       ///< The number of the process that has the root.
constexpr const char* kMarkerName = ".store";    ///< What the root holds.
constexpr const char* kTableName = ".versions";  ///< The versions of a model store.

constexpr std::string_view kPartPrefix = ".part-";      ///< Before the name of an entry.
constexpr std::string_view kResumePrefix = ".resume-";  ///< Before the digest of an entry's bytes.
constexpr std::string_view kNewPrefix = ".new-";        ///< Before the name of an own file.
constexpr std::string_view kNewExtraName = ".new-extra";

/// Whether `name` begins with `prefix`.
constexpr bool beginsWith(std::string_view name, std::string_view prefix) noexcept {
  return name.substr(0, prefix.size()) == prefix;
}

/// Whether a file of that name, directly below a root, is neither an entry nor hidden.
constexpr bool isReserved(std::string_view name) noexcept {
  return name == kMetadataName || name == kExtraName || name == kIndexName;
}

/// Whether a store counts what has that name, directly below its root, as an entry.
constexpr bool isEntryName(std::string_view name) noexcept {
  return !beginsWith(name, ".") && !isReserved(name);
}

}  // namespace zentrel::vistabase::ardelivery
