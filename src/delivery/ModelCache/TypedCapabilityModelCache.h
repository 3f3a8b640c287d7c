#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "delivery/ModelCache/CapabilityModelCache.h"

namespace zentrel::vistabase::ardelivery {

/// A capability whose complete versions are described by a record of type `Paths`, which must not
/// be modified once returned.
template <class Paths>
class TypedCapabilityModelCache : public CapabilityModelCache {
 public:
  /// Returns whether the version is complete.
  bool hasModelsForVersion(int version) override { return getModelPaths(version) != nullptr; }

  /// Sets `out` and returns true if the version is complete. Otherwise leaves `out` unchanged.
  virtual bool getModelsForVersion(int version, std::shared_ptr<Paths>& out) = 0;

  /// Returns the version's current files, and promotes them; null if one is missing.
  std::shared_ptr<Paths> getModelPaths(int version) {
    return modelsFromEntries(queryEntries(version));
  }

 protected:
  using CapabilityModelCache::CapabilityModelCache;

  /// Returns the record for a complete set of files, null for any other.
  virtual std::shared_ptr<Paths> modelsFromEntries(const ModelEntries& entries) = 0;
};

/// One file of a capability: its model type, that type's serialized name, and the path record's
/// field for its path.
template <class Paths>
struct ModelRow {
  int type;                  ///< The number of the model type.
  const char* name;          ///< Its serialized name.
  std::string Paths::*path;  ///< The field for the path.
};

/// Returns the names of a capability's types.
template <class Paths, std::size_t Count>
ModelTypeNames typeNames(const ModelRow<Paths> (&rows)[Count]) {
  ModelTypeNames names;
  for (const ModelRow<Paths>& row : rows) {
    names.emplace(row.type, row.name);
  }
  return names;
}

/// A capability fully described by a table of its files, `Models`: an array of ModelRow<Paths> in
/// type order.
template <class Paths, const auto& Models>
class TabularModelCache : public TypedCapabilityModelCache<Paths> {
 public:
  /// The files that make up a complete version.
  static constexpr auto& kModels = Models;

  /// `fileCache` holds the files, and is not accessed yet.
  explicit TabularModelCache(std::shared_ptr<IFileCache> fileCache)
      : TypedCapabilityModelCache<Paths>(std::move(fileCache), typeNames(Models)) {}

  /// See TypedCapabilityModelCache.
  bool getModelsForVersion(int version, std::shared_ptr<Paths>& out) override {
    std::shared_ptr<Paths> paths = this->getModelPaths(version);
    if (!paths) {
      return false;
    }
    out = std::move(paths);
    return true;
  }

 protected:
  /// See TypedCapabilityModelCache.
  std::shared_ptr<Paths> modelsFromEntries(const ModelEntries& entries) override {
    auto paths = std::make_shared<Paths>();
    for (const ModelRow<Paths>& row : Models) {
      const auto entry = entries.find(row.type);
      if (entry == entries.end()) {
        return nullptr;
      }
      (*paths).*row.path = entry->second;
    }
    return paths;
  }
};

}  // namespace zentrel::vistabase::ardelivery
