#pragma once

#include <string>
#include <vector>

#include "store/VersionTable.h"

/// The index of the raw model caches, which a store derives from its table. Raw readers find the
/// versions in it, and a store that has lost its table recovers from it.
namespace zentrel::vistabase::ardelivery {

/// The text of a table's index. The active version comes last.
std::string printIndex(const VersionTable& table);

/// A version in an index whose files are all named as a store names them, DIGEST-TYPE. The index
/// has no sizes.
struct IndexedVersion {
  struct File {
    std::string type, sha256, name;
  };
  int number;
  std::vector<File> files;
};

/// Whether the name is that of a store's model file, DIGEST-TYPE.
bool isModelFileName(const std::string& name) noexcept;

/// The versions in an index that a store wrote, in order. Throws json::Error if it is damaged.
std::vector<IndexedVersion> readIndex(const std::string& text);

}  // namespace zentrel::vistabase::ardelivery
