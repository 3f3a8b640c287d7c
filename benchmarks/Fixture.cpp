#include "benchmarks/Fixture.h"

#include <boost/filesystem/operations.hpp>
#include <cstdio>
#include <stdexcept>
#include <utility>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/ModelCache/FacetrackerModelCache.h"
#include "delivery/Storage/FileIO.h"

namespace zentrel::vistabase::ardelivery::bench {
namespace {

constexpr std::size_t kIndexEntry = 4;  // neither evicted from a small root nor looked up

std::string keyOf(std::size_t entry) {
  if (entry == kIndexEntry) {
    return "versioned_index";
  }
  char key[40];
  std::snprintf(key, sizeof key, "face_tracker_model_%04zu", entry);
  return key;
}

std::string recordOf(const std::string& key, std::size_t entry) {
  return "{\"key\":\"" + key + "\",\"size\":" + std::to_string(Fixture::kEntryBytes) +
         ",\"lastAccess\":" + std::to_string(1'700'000'000'000 + entry) + "}";
}

}  // namespace

Fixture::Fixture(std::string rootPath, std::size_t entries)
    : root(std::move(rootPath)),
      metadataFile(root + "/metadata.json"),
      extraDirectory(root + "/extra"),
      budget(kEntryBytes * static_cast<std::int64_t>(entries)),
      newKey(keyOf(9999)),
      newExtraPath(extraDirectory + "/" + newKey),
      recordLength(recordOf(newKey, 0).size() + 1) {
  std::string records, models;
  for (std::size_t i = 0; i < entries; ++i) {
    keys.push_back(keyOf(i));
    paths.push_back(root + "/" + keys[i]);
    extraPaths.push_back(extraDirectory + "/" + keys[i]);
    records += (i == 0 ? "" : ",") + recordOf(keys[i], i);
  }
  for (const auto& model : FacetrackerModelCache::kModels) {
    const std::size_t entry = modelPaths.size();
    models += std::string(entry == 0 ? "" : ",") + "{\"type\":\"" + model.name +
              "\",\"cacheKey\":\"" + keys[entry] + "\"}";
    modelPaths.push_back(paths[entry]);
  }
  metadata = "{\"entries\":[" + records + "]}";
  index_ =
      "{\"versions\":[{\"version\":" + std::to_string(kVersion) + ",\"models\":[" + models + "]}]}";
  boost::filesystem::remove_all(root);
  restore();
  if (createFileCache(root, budget)->getSize() != budget) {
    throw std::runtime_error("The cache does not see the entries below " + root);
  }
}

Fixture::~Fixture() {
  boost::system::error_code ignored;
  boost::filesystem::remove_all(root, ignored);
}

void Fixture::restore() const {
  boost::filesystem::create_directories(extraDirectory);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (!boost::filesystem::exists(paths[i])) {
      FileIO().writeFile(paths[i], i == kIndexEntry ? index_ : std::string(kEntryBytes, 'm'));
    }
    if (!boost::filesystem::exists(extraPaths[i])) {
      FileIO().writeFile(extraPaths[i], "sixteen bytes of");
    }
  }
  FileIO().writeFile(metadataFile, metadata);
}

}  // namespace zentrel::vistabase::ardelivery::bench
