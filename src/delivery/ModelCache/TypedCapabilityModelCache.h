#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "delivery/ModelCache/CapabilityModelCache.h"

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
    return modelsFromEntries(queryEntries(version));
  }

 protected:
  using CapabilityModelCache::CapabilityModelCache;

  /// The record of a complete set of files, or null.
  virtual std::shared_ptr<Paths> modelsFromEntries(const ModelEntries& entries) = 0;
};

/// One file of a capability: its model type, the type's serialized name, and the field of the path
/// record that holds its path.
template <class Paths>
struct ModelRow {
  int type;                  ///< The model type's number.
  const char* name;          ///< Its serialized name.
  std::string Paths::*path;  ///< Where the path goes.
};

/// The names of a capability's types.
template <class Paths, std::size_t Count>
ModelTypeNames typeNames(const ModelRow<Paths> (&rows)[Count]) {
  ModelTypeNames names;
  for (const ModelRow<Paths>& row : rows) {
    names.emplace(row.type, row.name);
  }
  return names;
}

/// A capability that is wholly described by the table of its files, `Models`: an array of
/// ModelRow<Paths> in the order of the types.
template <class Paths, const auto& Models>
class TabularModelCache : public TypedCapabilityModelCache<Paths> {
 public:
  /// The files that make up a complete version.
  static constexpr auto& kModels = Models;

  /// Over the file cache that holds the files. Touches nothing.
  explicit TabularModelCache(std::shared_ptr<IFileCache> fileCache)
      : TypedCapabilityModelCache<Paths>(std::move(fileCache), typeNames(Models)) {}

  /// As declared.
  bool getModelsForVersion(int version, std::shared_ptr<Paths>& out) override {
    std::shared_ptr<Paths> paths = this->getModelPaths(version);
    if (!paths) {
      return false;
    }
    out = std::move(paths);
    return true;
  }

 protected:
  /// As declared.
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
