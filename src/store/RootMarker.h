#pragma once

#include <optional>
#include <string>
#include <vector>

#include "store/Capability.h"
#include "store/IDisk.h"

namespace zentrel::vistabase::ardelivery {

/// What a root holds: files by keys, or the versions of a capability's models.
struct RootContent {
  std::optional<Capability> capability = {};
  /// Types of models of some capability, of a root that does not tell which one.
  std::vector<std::string> types = {};

  /// Whether a root of this content is one of `other`, as far as can be told.
  bool mayBe(const RootContent& other) const;
  /// "files", or "models of CAPABILITY".
  std::string toString() const;
};

/// The file that says what a root holds. It lasts before a store changes anything else.
struct RootMarker {
  /// None if there is no such file. Throws json::Error or StoreError for one that makes no sense or
  /// cannot be read, and NewerDocument.
  static std::optional<RootContent> read(IDirectory& root);
  static void write(IDirectory& root, const RootContent& content);
};

/// What a root without a marker holds, by the files of a store that it has. None for a root that no
/// store has had, which either kind may take.
std::optional<RootContent> identifyRoot(IDirectory& root);

}  // namespace zentrel::vistabase::ardelivery
