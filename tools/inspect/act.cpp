#include <algorithm>
#include <boost/filesystem/operations.hpp>
#include <stdexcept>

#include "delivery/FileCache/recoverMetadata.h"
#include "delivery/FileNames.h"
#include "store/PosixDisk.h"
#include "support/util/joined.h"
#include "tools/inspect/DryStore.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

namespace fs = boost::filesystem;

std::string recover(const std::string& root) {
  const auto directory = openPosixDirectory(root);
  if (!directory->tryLock()) {  // Which keeps a store away until this is done.
    throw std::runtime_error(root + " has a store in " + describeHolder(*directory));
  }
  const bool isDone = recoverMetadata(root) == MetadataRecovery::SetAside;
  return joined("metadata.json is ", isDone ? "now " : "not damaged: nothing done",
                isDone ? kDamagedMetadataName : "");
}

void change(ModelStore& store, const Options& options) {
  if (options.activate) {
    store.activate(*options.activate);
    return;
  }
  for (const std::int32_t version : options.trimExcept) {
    store.files(version);  // Throws for one that is not there: a slip would delete others.
  }
  store.trimExcept(options.trimExcept);
}

/// Has the store of a root do it, once it is clear that it can.
std::string change(const std::string& root, DryStore& dry, const Options& options) {
  change(*dry.store, options);
  dry.store->close();
  const auto store = ModelStore::open(root, *dry.content->capability, INT64_MAX);
  change(*store, options);
  const auto snapshot = store->snapshot();
  std::string text = joined(store->sizeBytes(), " bytes, versions");
  for (const int version : snapshot->versions) {
    text += joined(" ", version, snapshot->active == version ? " (active)" : "");
  }
  return text;
}

/// Leaves nothing behind when it fails.
std::string exportVersion(const std::string& root, ModelStore& store, const Options& options) {
  const auto& [version, folder] = options.exported;
  const std::vector<StoredModelFile> models = store.files(version);
  const std::vector<ModelFile> damaged = store.verify();
  for (const auto& [file, path] : models) {
    if (std::count(damaged.begin(), damaged.end(), file) != 0) {
      throw std::runtime_error(path + " is damaged");
    }
  }
  if (beginsWith(fs::weakly_canonical(folder).string() + '/', fs::canonical(root).string() + '/')) {
    throw std::runtime_error(folder + " lies in the cache");
  }
  if (!fs::create_directory(folder)) {
    throw std::runtime_error(folder + " exists");
  }
  try {
    for (const auto& [file, path] : models) {
      fs::copy_file(path, fs::path(folder) / file.type());
    }
  } catch (...) {
    fs::remove_all(folder);
    throw;
  }
  return joined("version ", version, " copied to ", folder);
}

}  // namespace

std::string act(const std::string& root, const Options& options) {
  DryStore dry(root);  // Which throws for what a newer release has written.
  if (options.recover) {
    return recover(root);
  }
  if (!dry.content || !dry.content->capability) {
    throw std::runtime_error(root + " does not tell of which capability it has models");
  }
  dry.open();
  return options.exported.second.empty() ? change(root, dry, options)
                                         : exportVersion(root, *dry.store, options);
}

}  // namespace zentrel::vistabase::ardelivery::inspect
