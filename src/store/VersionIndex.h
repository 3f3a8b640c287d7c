#pragma once

#include <string>
#include <vector>

#include "store/VersionTable.h"

/// The index of the raw model caches, which a store derives from its table: raw readers find the
/// versions in it, and a store that has lost its table comes back from it.
namespace zentrel::vistabase::ardelivery {

/// The text of a table's index. The active version stands last.
std::string printIndex(const VersionTable& table);

/// A version of an index whose files have the names that a store gives, DIGEST-TYPE: sizes are not
/// in the index.
struct IndexedVersion {
  struct File {
    std::string type, sha256, name;
  };
  int number;
  std::vector<File> files;
};

/// Whether an entry has the name of a store's model file, DIGEST-TYPE.
bool isModelFileName(const std::string& name) noexcept;

/// The versions of an index that are a store's, in their order. Throws json::Error if the text is
/// damaged.
std::vector<IndexedVersion> readIndex(const std::string& text);

}  // namespace zentrel::vistabase::ardelivery
