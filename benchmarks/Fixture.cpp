#include "benchmarks/Fixture.h"

#include <boost/filesystem/operations.hpp>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <utility>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/ModelCache/FacetrackerModelCache.h"
#include "delivery/Storage/FileIO.h"

namespace zentrel::vistabase::ardelivery::bench {
namespace {

const std::string kExtra = "sixteen bytes of";

std::string keyOf(std::size_t index) {
  char key[40];
  std::snprintf(key, sizeof key, "face_tracker_model_%04zu", index);
  return key;
}

std::string recordOf(const std::string& key, std::size_t index) {
  return "{\"key\":\"" + key + "\",\"size\":" + std::to_string(Fixture::kEntryBytes) +
         ",\"lastAccess\":" + std::to_string(1'700'000'000'000 + index) + "}";
}

}  // namespace

Fixture::Fixture(std::string rootPath, std::size_t entries)
    : root(std::move(rootPath)),
      metadataFile(root + "/metadata.json"),
      extraDirectory(root + "/extra"),
      budget(kEntryBytes * static_cast<std::int64_t>(entries)),
      newKey(keyOf(9999)),
      newPath(root + "/" + newKey),
      newExtraPath(extraDirectory + "/" + newKey),
      recordLength(recordOf(newKey, 0).size() + 1) {
  std::string records;
  for (std::size_t i = 0; i < entries; ++i) {
    keys.push_back(keyOf(i));
    paths.push_back(root + "/" + keys[i]);
    extraPaths.push_back(extraDirectory + "/" + keys[i]);
    records += (i == 0 ? "" : ",") + recordOf(keys[i], i);
  }
  metadata = "{\"entries\":[" + records + "]}";
  boost::filesystem::remove_all(root);
  restore();
  for (const auto& [name, meta] : createFileCache(root, budget)->getAllMetas()) {
    listedExtraPaths.push_back(extraDirectory + "/" + name);
  }
  if (listedExtraPaths.size() != entries) {
    throw std::runtime_error("The cache does not see the entries below " + root);
  }
}

Fixture::~Fixture() {
  boost::system::error_code ignored;
  boost::filesystem::remove_all(root, ignored);
}

void Fixture::restore(std::size_t entries) const {
  boost::filesystem::create_directories(extraDirectory);
  for (std::size_t i = 0; i < entries; ++i) {
    if (!boost::filesystem::exists(paths[i])) {
      writeEntry(paths[i]);
    }
    if (!boost::filesystem::exists(extraPaths[i])) {
      FileIO().writeFile(extraPaths[i], kExtra);
    }
  }
  boost::filesystem::remove(newPath);
  FileIO().writeFile(metadataFile, metadata);
}

void Fixture::writeEntry(const std::string& path) const {
  FileIO().writeFile(path, std::string(kEntryBytes, 'm'));
}

void Fixture::addVersion() const {
  FacetrackerModelCache models(createFileCache(root, std::numeric_limits<std::int64_t>::max()));
  const char* const types[] = {"face_tracker_model.bin", "face_detector_model.bin",
                               "features_model.bin", "pdm_multires.bin"};
  for (std::size_t i = 0; i < 4; ++i) {
    models.addModelForVersionIfInCache(kVersion, {keys[i], types[i]});
  }
}

}  // namespace zentrel::vistabase::ardelivery::bench
