// model_host ROOT VERSION [FILE FILE]: keeps the two files as that version of the segmentation
// models, in a cache below ROOT, and prints where they lie. Without files, what an earlier run
// kept.

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/FileCache/recoverMetadata.h"
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

/// Returns once what is at the path would outlast a power cut.
bool sync(const fs::path& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const bool synced = file >= 0 && ::fsync(file) == 0;
  if (file >= 0) {
    ::close(file);
  }
  return synced;
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
  // Whatever lies at the entry's path is an entry, half a file too: written beside, then renamed.
  const fs::path target = entry->path;
  const fs::path part = target.parent_path() / ".part";
  fs::copy_file(file, part, fs::copy_options::overwrite_existing);
  if (!sync(part)) {
    return false;
  }
  fs::rename(part, target);
  if (!sync(target.parent_path()) || !files.getCacheEntry(key)) {  // The newest: others go first.
    return false;
  }
  files.commit(key);
  files.unlock(key);
  return files.getCacheEntryWithoutPromotion(key) != nullptr;  // There was room for it.
}

void addModel(IFileCache& files, SegmentationModelCache& models, int version,
              const std::string& type, const fs::path& file) {
  const std::string key = "v" + std::to_string(version) + "-" + type;
  if (!keep(files, key, file) || !models.addModelForVersionIfInCache(version, {key, type})) {
    std::cerr << "model_host: " << file << " could not be kept\n";
  }
}

int run(const fs::path& root, int version, int count, char** names) {
  fs::create_directories(root);  // createFileCache does not.
  if (recoverMetadata(root.string()) == MetadataRecovery::SetAside) {
    std::cerr << "model_host: the cache's records were damaged; its files are adopted again\n";
  }
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
