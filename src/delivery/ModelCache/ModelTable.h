#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "delivery/ModelCache/CapabilityModelTypeSerializer.h"
#include "delivery/ModelCache/ModelEntries.h"

namespace zentrel::vistabase::ardelivery {

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
CapabilityModelTypeSerializer::Table typeNames(const ModelRow<Paths> (&rows)[Count]) {
  CapabilityModelTypeSerializer::Table names;
  for (const ModelRow<Paths>& row : rows) {
    names.emplace(row.type, row.name);
  }
  return names;
}

/// The path record of a complete set of files; null as soon as one row's file is missing.
template <class Paths, std::size_t Count>
std::shared_ptr<Paths> pathsFromEntries(const ModelRow<Paths> (&rows)[Count],
                                        const ModelEntries& entries) {
  auto paths = std::make_shared<Paths>();
  for (const ModelRow<Paths>& row : rows) {
    const auto entry = entries.find(row.type);
    if (entry == entries.end()) {
      return nullptr;
    }
    (*paths).*row.path = entry->second;
  }
  return paths;
}

}  // namespace zentrel::vistabase::ardelivery
