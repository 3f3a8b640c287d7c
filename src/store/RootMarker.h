#pragma once

#include <optional>
#include <string>
#include <vector>

#include "store/Capability.h"
#include "store/IDisk.h"

namespace zentrel::vistabase::ardelivery {

/// What a root holds: files under keys, or the versions of a capability's models.
struct RootContent {
  std::optional<Capability> capability = {};
  /// Model types, if the root does not say to which capability they belong.
  std::vector<std::string> types = {};

  /// Whether a root with this content may hold `other`, as far as is known.
  bool isCompatibleWith(const RootContent& other) const;
  /// "files", or "models of CAPABILITY".
  std::string toString() const;
};

/// The file that says what a root holds. Made durable before a store changes anything else.
struct RootMarker {
  /// Returns nullopt if there is no such file. Throws json::Error if it is malformed, StoreError if
  /// it cannot be read, and NewerDocument.
  static std::optional<RootContent> read(IDirectory& root);
  static void write(IDirectory& root, const RootContent& content);
};

/// Infers from a store's other files what a root without a marker holds. Returns nullopt for a root
/// that no store has used: either kind may take it.
std::optional<RootContent> identifyRoot(IDirectory& root);

}  // namespace zentrel::vistabase::ardelivery
