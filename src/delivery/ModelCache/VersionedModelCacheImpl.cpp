#include "delivery/ModelCache/VersionedModelCacheImpl.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

#include "support/util/ErrorTexts.h"

namespace zentrel::vistabase::ardelivery {
namespace {

// The second text says "mode" because report collectors match on it.
constexpr ErrorTexts kAddErrors{
    "Could not add model into the cache: ",
    "Could not add mode into the cache - unknown exception",
};
constexpr ErrorTexts kQueryEntriesErrors{
    "Could not query entries: ",
    "Could not query entries - unknown exception",
};
constexpr ErrorTexts kQueryVersionsErrors{
    "Could not query versions: ",
    "Could not query versions - unknown exception",
};

/// Not a constant, since it names the version. Nothing follows the last ": " because report
/// collectors match on it.
struct DeleteErrors {
  int version;
  std::string operator()(const char* cause) const {
    const std::string failure = "Could not delete version: " + std::to_string(version);
    return cause == nullptr ? failure + " unknown exception: "
                            : failure + " with exception: " + cause;
  }
};

}  // namespace

VersionedModelCacheImpl::VersionedModelCacheImpl(
    std::unique_ptr<IFileIO> fileIO,
    std::unique_ptr<ICacheDescriptorSerializer> descriptorSerializer,
    std::shared_ptr<IFileCache> fileCache,
    std::shared_ptr<CapabilityModelTypeSerializer> typeSerializer)
    : fileIO_(std::move(fileIO)),
      descriptorSerializer_(std::move(descriptorSerializer)),
      fileCache_(std::move(fileCache)),
      typeSerializer_(std::move(typeSerializer)),
      descriptor_(quovix::make_unique_ref<CacheDescriptor>()) {}

bool VersionedModelCacheImpl::addModelIfInCache(int version, const ModelRecord& model) {
  return rethrowDescribed(kAddErrors, [&] {
    ensureLoaded();
    if (!fileCache_->getCacheEntry(model.cacheKey)) {
      return false;
    }
    add(version, model);
    return true;
  });
}

ModelEntries VersionedModelCacheImpl::queryEntries(int version) {
  return rethrowDescribed(kQueryEntriesErrors, [&] {
    ensureLoaded();
    ModelEntries entries(10);
    if (const VersionRecord* const record = findVersion(version)) {
      // A copy, because a sink that is told of a failed look-up may modify the version.
      const std::vector<ModelRecord> models = record->models;
      for (const ModelRecord& model : models) {
        if (const auto entry = fileCache_->getCacheEntry(model.cacheKey)) {
          entries.emplace(typeSerializer_->deserialize(model.type), entry->path);
        }
      }
    }
    return entries;
  });
}

std::vector<int> VersionedModelCacheImpl::queryVersions() {
  return rethrowDescribed(kQueryVersionsErrors, [&] {
    ensureLoaded();
    std::vector<int> versions;
    for (const VersionRecord& record : descriptor_->versions) {
      versions.push_back(record.version);
    }
    return versions;
  });
}

void VersionedModelCacheImpl::deleteVersion(int version) {
  rethrowDescribed(DeleteErrors{version}, [&] {
    ensureLoaded();
    const VersionRecord* const record = findVersion(version);
    if (record == nullptr) {
      return;
    }
    for (const std::string& key : unsharedKeys(*record)) {
      fileCache_->remove(key);
    }
    CacheDescriptor descriptor = *descriptor_;
    auto& versions = descriptor.versions;
    const auto isDeleted = [version](const VersionRecord& other) {
      return other.version == version;
    };
    versions.erase(std::remove_if(versions.begin(), versions.end(), isDeleted), versions.end());
    replaceDescriptor(std::move(descriptor));
  });
}

void VersionedModelCacheImpl::ensureLoaded() {
  if (!descriptorLoaded_) {
    descriptor_ = loadDescriptor();
    descriptorLoaded_ = true;
  }
}

std::unique_ptr<CacheDescriptor> VersionedModelCacheImpl::loadDescriptor() {
  const auto entry = fileCache_->getCacheEntry(kIndexKey);
  if (!entry) {
    return std::make_unique<CacheDescriptor>();
  }
  return descriptorSerializer_->deserialize(fileIO_->readFile(entry->path));
}

void VersionedModelCacheImpl::storeDescriptor() {
  auto entry = fileCache_->getCacheEntry(kIndexKey);
  if (!entry) {
    entry = fileCache_->insertAndLock(kIndexKey);
  }
  if (!entry) {
    throw std::runtime_error("Could not insert the index key into the cache.");
  }
  fileIO_->writeFile(entry->path, descriptorSerializer_->serialize(*descriptor_));
  // Not a commit: unlocking is enough for the file cache to adopt the file, and a commit could
  // evict models to make room for the index.
  fileCache_->unlock(kIndexKey);
}

/// Updates memory first: if the write fails, the next one stores this change too.
void VersionedModelCacheImpl::replaceDescriptor(CacheDescriptor descriptor) {
  descriptor_ = quovix::make_unique_ref<CacheDescriptor>(std::move(descriptor));
  storeDescriptor();
}

const VersionRecord* VersionedModelCacheImpl::findVersion(int version) const {
  for (const VersionRecord& record : descriptor_->versions) {
    if (record.version == version) {
      return &record;
    }
  }
  return nullptr;
}

void VersionedModelCacheImpl::add(int version, const ModelRecord& model) {
  const VersionRecord* const existing = findVersion(version);
  VersionRecord record = existing == nullptr ? VersionRecord{version, {}} : *existing;
  const auto sameType =
      std::find_if(record.models.begin(), record.models.end(),
                   [&model](const ModelRecord& other) { return other.type == model.type; });
  if (sameType == record.models.end()) {
    record.models.push_back(model);
  } else if (sameType->cacheKey == model.cacheKey) {
    return;
  } else {
    sameType->cacheKey = model.cacheKey;
  }
  CacheDescriptor descriptor = *descriptor_;
  if (existing != nullptr) {
    // Only this record, so that an index with duplicate versions loses nothing.
    descriptor.versions.erase(descriptor.versions.begin() +
                              (existing - descriptor_->versions.data()));
  }
  descriptor.versions.push_back(std::move(record));
  replaceDescriptor(std::move(descriptor));
}

std::vector<std::string> VersionedModelCacheImpl::unsharedKeys(const VersionRecord& record) const {
  const auto isShared = [this, &record](const std::string& key) {
    for (const VersionRecord& other : descriptor_->versions) {
      for (const ModelRecord& model : other.models) {
        if (other.version != record.version && model.cacheKey == key) {
          return true;
        }
      }
    }
    return false;
  };
  std::vector<std::string> keys;
  for (const ModelRecord& model : record.models) {
    if (!isShared(model.cacheKey)) {
      keys.push_back(model.cacheKey);
    }
  }
  return keys;
}

}  // namespace zentrel::vistabase::ardelivery
