#pragma once

#include <cstddef>
#include <string_view>

/// The names of all files in a root that are not entries.
namespace zentrel::vistabase::ardelivery {

// Files of the file cache and the model caches, directly in the root.
constexpr const char* kMetadataName = "metadata.json";
constexpr const char* kExtraName = "extra";
constexpr const char* kIndexName = "versioned_index";  ///< An entry; its key is the same.

/// The new name of a metadata file that cannot be read.
constexpr const char* kDamagedMetadataName = ".metadata.json.damaged";

// Files of the stores. All begin with a dot, so that they are not entries.
constexpr const char* kLockName = ".lock";       ///< The ID of the process that has the root.
constexpr const char* kMarkerName = ".store";    ///< What the root holds.
constexpr const char* kTableName = ".versions";  ///< The versions of a model store.

constexpr std::string_view kPartPrefix = ".part-";      ///< Followed by the name of an entry.
constexpr std::string_view kResumePrefix = ".resume-";  ///< Followed by the content's digest.
constexpr std::string_view kNewPrefix = ".new-";        ///< Followed by the file to replace.
constexpr std::string_view kNewExtraName = ".new-extra";

constexpr std::size_t kLongestFileName = 255;  ///< Bytes; of most file systems.

/// Whether `name` begins with `prefix`.
constexpr bool beginsWith(std::string_view name, std::string_view prefix) noexcept {
  return name.substr(0, prefix.size()) == prefix;
}

/// Whether a file of that name, directly in a root, is neither an entry nor hidden.
constexpr bool isReserved(std::string_view name) noexcept {
  return name == kMetadataName || name == kExtraName || name == kIndexName;
}

/// Whether a store counts a file or directory of that name, directly in its root, as an entry.
constexpr bool isEntryName(std::string_view name) noexcept {
  return !beginsWith(name, ".") && !isReserved(name);
}

}  // namespace zentrel::vistabase::ardelivery
