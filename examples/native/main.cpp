// model_host ROOT VERSION [FILE FILE]: keeps the two files as that version of the segmentation
// models, in a cache below ROOT, and prints where they lie. Without files, what an earlier run
// kept.

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/ModelCache/SegmentationModelCache.h"
#include "platform/softerror/softerror.h"

namespace {

namespace fs = std::filesystem;
using namespace zentrel::vistabase::ardelivery;

constexpr std::int64_t kBudget = 50'000'000;

/// The host's own log. Without it, the library writes to standard error.
void logSoftError(const softerror::Report& report) {
  std::cerr << "model_host: " << report.category << ": " << report.message << '\n';
}

/// Copies a file into the cache. Operations never throw, but a failed one returns null.
bool keep(IFileCache& files, const std::string& key, const fs::path& file) {
  if (files.getCacheEntry(key)) {
    return true;
  }
  const auto entry = files.insertAndLock(key);
  if (!entry) {
    return false;
  }
  fs::copy_file(file, entry->path, fs::copy_options::overwrite_existing);
  files.getCacheEntry(key);  // The newest file now: commit evicts the oldest.
  files.commit(key);
  files.unlock(key);
  return true;
}

void addModel(IFileCache& files, SegmentationModelCache& models, int version,
              const std::string& type, const fs::path& file) {
  const std::string key = "v" + std::to_string(version) + "-" + type;
  if (!keep(files, key, file) || !models.addModelForVersionIfInCache(version, {key, type})) {
    std::cerr << "model_host: " << file << " could not be kept\n";
  }
}

int run(const fs::path& root, int version, int count, char** names) {
  fs::create_directories(root);  // The cache expects its root to be there.
  const std::shared_ptr<IFileCache> files = createFileCache(root.string(), kBudget);
  SegmentationModelCache models(files);
  if (count >= 2) {
    addModel(*files, models, version, "seg_init_net.pb", names[0]);
    addModel(*files, models, version, "seg_predict_net.pb", names[1]);
    models.trimExceptVersion(version);
  }
  const auto paths = models.getModelPaths(version);
  if (!paths) {
    std::cout << "version " << version << " is not complete\n";
    return EXIT_FAILURE;
  }
  std::cout << paths->initNetPath << '\n' << paths->predictNetPath << '\n';
  return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) {
    std::cerr << "usage: model_host ROOT VERSION [FILE FILE]\n";
    return 2;
  }
  softerror::setSink(&logSoftError);
  try {
    return run(arguments[1], std::stoi(arguments[2]), count - 3, arguments + 3);
  } catch (const std::exception& error) {
    std::cerr << "model_host: " << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
