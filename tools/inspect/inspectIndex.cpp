#include <exception>
#include <memory>
#include <set>
#include <string_view>

#include "delivery/FileCache/CacheKey.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"
#include "delivery/ModelCache/CapabilityModelTypeSerializer.h"
#include "delivery/ModelCache/FacetrackerModelCache.h"
#include "delivery/ModelCache/SegmentationModelCache.h"
#include "delivery/ModelCache/VersionedModelCacheImpl.h"
#include "delivery/Storage/FilesystemOperations.h"
#include "tools/inspect/Terminal.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

namespace fs = boost::filesystem;

bool isCached(const fs::path& root, const std::string& key) {
  try {
    return FilesystemOperations().exists(root / fileNameOf(key));
  } catch (const std::exception&) {
    return false;  // To the caller of the file cache, a key that it refuses is not there either.
  }
}

std::optional<int> typeOf(const CapabilityModelTypeSerializer& types, const std::string& name) {
  try {
    return types.deserialize(name);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

/// Adds the capability unless the version has none of its models. Returns the names of its types.
template <class Cache>
std::set<std::string_view> addCapability(const char* name, Version& version) {
  const CapabilityModelTypeSerializer types(typeNames(Cache::kModels));
  ModelEntries found;
  bool isNamed = false;
  for (const Model& model : version.models) {
    if (const auto type = typeOf(types, model.type)) {
      isNamed = true;
      if (model.present) {
        found.emplace(*type, model.cacheKey);
      }
    }
  }
  std::set<std::string_view> names;
  Capability capability{name, {}};
  for (const auto& row : Cache::kModels) {
    names.insert(row.name);
    if (found.count(row.type) == 0) {
      capability.missing.emplace_back(row.name);
    }
  }
  if (isNamed) {
    version.capabilities.push_back(std::move(capability));
  }
  return names;
}

void judge(const Version& version, const std::set<std::string_view>& known,
           std::vector<std::string>& findings) {
  const std::string name = "version " + std::to_string(version.number);
  for (const Model& model : version.models) {
    if (known.count(model.type) == 0) {
      findings.push_back(name + " has a model of no known type: " + printable(model.type));
    }
  }
  for (const Capability& capability : version.capabilities) {
    const std::string failure = name + " of " + capability.name + " is not complete: no file for ";
    for (const std::string& missing : capability.missing) {
      findings.push_back(failure + missing);
    }
  }
}

}  // namespace

void inspectIndex(const fs::path& root, Report& report) {
  CacheDescriptorSerializer serializer;
  auto descriptor = std::make_unique<CacheDescriptor>();
  report.index =
      readOwnFile(root, VersionedModelCacheImpl::kIndexKey,
                  [&](const std::string& text) { descriptor = serializer.deserialize(text); });
  if (report.index.damage) {
    report.findings.push_back("versioned_index is damaged: " + report.index.damage->describe());
    return;
  }
  std::set<std::string_view> capabilities;
  for (const VersionRecord& record : descriptor->versions) {
    Version version{record.version, {}, {}};
    for (const ModelRecord& model : record.models) {
      version.models.push_back({model.type, model.cacheKey, isCached(root, model.cacheKey)});
    }
    std::set<std::string_view> known =
        addCapability<FacetrackerModelCache>("face tracking", version);
    known.merge(addCapability<SegmentationModelCache>("segmentation", version));
    judge(version, known, report.findings);
    for (const Capability& capability : version.capabilities) {
      capabilities.insert(capability.name);
    }
    report.versions.push_back(std::move(version));
  }
  if (capabilities.size() > 1) {
    report.findings.emplace_back(
        "face tracking and segmentation share one index, and overwrite each other's versions");
  }
}

}  // namespace zentrel::vistabase::ardelivery::inspect
