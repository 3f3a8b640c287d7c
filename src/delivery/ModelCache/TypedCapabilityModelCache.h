#pragma once

#include <memory>
#include <utility>

#include "delivery/ModelCache/CapabilityModelCache.h"
#include "delivery/ModelCache/ModelEntries.h"

namespace zentrel::vistabase::ardelivery {

/// A capability whose complete versions are described by a record of type `Paths`, which nobody
/// changes once it is handed out.
template <class Paths>
class TypedCapabilityModelCache : public CapabilityModelCache {
 public:
  /// Whether the version is complete.
  bool hasModelsForVersion(int version) override { return getModelPaths(version) != nullptr; }

  /// Sets `out` and returns true when the version is complete; otherwise leaves it alone.
  virtual bool getModelsForVersion(int version, std::shared_ptr<Paths>& out) = 0;

  /// The version's files as they are now, each promoted; null while one is missing.
  std::shared_ptr<Paths> getModelPaths(int version) {
    return modelsFromEntries(cache().queryEntries(version));
  }

 protected:
  using CapabilityModelCache::CapabilityModelCache;

  /// The record of a complete set of files, or null.
  virtual std::shared_ptr<Paths> modelsFromEntries(const ModelEntries& entries) = 0;

  /// Sets `out` unless `paths` is null; returns whether it did.
  static bool assignIfPresent(std::shared_ptr<Paths> paths, std::shared_ptr<Paths>& out) {
    if (!paths) {
      return false;
    }
    out = std::move(paths);
    return true;
  }
};

}  // namespace zentrel::vistabase::ardelivery
