#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "platform/softerror/softerror.h"
#include "store/ModelStore.h"
#include "store/OpenSslDigest.h"

/// Versions to fill stores with. Each has two files of its own and shares the other two.
namespace zentrel::vistabase::ardelivery::samples {

inline const Capability kCapability = Capability::faceTracking();
constexpr std::int64_t kSize = 100;
constexpr std::int64_t kVersionSize = 4 * kSize;
constexpr std::int64_t kTwoVersions = 6 * kSize;  ///< Of two versions together.

inline std::string sha256(const std::string& bytes) {
  const auto digest = newOpenSslDigest();
  digest->update(bytes.data(), bytes.size());
  return digest->finish();
}

inline std::string bytesOf(const std::string& type, int version) {
  const auto& types = kCapability.types();
  const bool isShared = std::find(types.begin(), types.end(), type) - types.begin() >= 2;
  std::string bytes = type + (isShared ? "" : " of version " + std::to_string(version));
  bytes.resize(static_cast<std::size_t>(kSize), '.');
  return bytes;
}

inline ModelFile fileOf(const std::string& type, const std::string& bytes) {
  return {type, static_cast<std::int64_t>(bytes.size()), sha256(bytes)};
}

inline std::vector<ModelFile> filesOf(int version) {
  std::vector<ModelFile> files;
  for (const std::string& type : kCapability.types()) {
    files.push_back(fileOf(type, bytesOf(type, version)));
  }
  return files;
}

/// The name of a model file in a root.
inline std::string nameOf(const ModelFile& file) {
  return file.sha256() + '-' + file.type();
}

/// Writes the rest of `bytes`, from the writer's offset on, and commits.
inline void put(EntryWriter& out, const std::string& bytes) {
  const auto offset = static_cast<std::size_t>(out.offset());
  out.write(bytes.data() + offset, bytes.size() - offset);
  out.commit();
}

inline void download(Update& update, const ModelFile& file, int version) {
  put(*update.write(file), bytesOf(file.type(), version));
}

inline void update(ModelStore& store, int version) {
  const auto update = store.begin(version, filesOf(version));
  for (const ModelFile& file : update->missing()) {
    download(*update, file, version);
  }
  update->activate();
}

/// Returns the StoreError that a call throws; fails, and returns one of Io, if it throws none.
template <class Call>
StoreError errorOf(const Call& call) {
  try {
    call();
    ADD_FAILURE() << "no error";
  } catch (const StoreError& error) {
    return error;
  }
  return {StoreError::Reason::Io, ""};
}

template <class Call>
StoreError::Reason reasonOf(const Call& call) {
  return errorOf(call).reason();
}

/// Counts soft errors instead of printing them.
class SoftErrors {
 public:
  SoftErrors() {
    count = 0;
    softerror::setSink({[](const softerror::Report&, void*) { ++count; }});
  }
  SoftErrors(const SoftErrors&) = delete;
  SoftErrors& operator=(const SoftErrors&) = delete;
  ~SoftErrors() { softerror::setSink({}); }

  static inline std::atomic<int> count = 0;
};

}  // namespace zentrel::vistabase::ardelivery::samples
