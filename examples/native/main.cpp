// model_host ROOT VERSION [FILE FILE]: stores the two files as that version of the segmentation
// models, below ROOT, and prints their paths. Without files, rolls back to a version that is there.

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <openssl/evp.h>

#include "modelcache/modelcache.h"

namespace {

using namespace zentrel::vistabase::ardelivery;

constexpr std::int64_t kBudget = 50'000'000;

/// The host's own log, passed as user data. Without it, the library writes to standard error.
void logSoftError(const softerror::Report& report, void* log) {
  *static_cast<std::ostream*>(log)
      << "model_host: " << report.category << ": " << report.message << '\n';
}

/// Calls `take` with the bytes of a file from `offset` on, in pieces. An app would download them.
template <class Take>
void forEachPiece(const std::string& path, std::int64_t offset, const Take& take) {
  std::ifstream file(path, std::ios::binary);
  file.seekg(offset);
  if (!file) {
    throw std::runtime_error("cannot read " + path);
  }
  char piece[1 << 16];
  while (file.read(piece, sizeof piece), file.gcount() > 0) {
    take(piece, static_cast<std::size_t>(file.gcount()));
  }
}

/// What a server would say about a file.
ModelFile describe(const std::string& type, const std::string& path) {
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> digest(EVP_MD_CTX_new(),
                                                                       &EVP_MD_CTX_free);
  std::int64_t size = 0;
  EVP_DigestInit_ex(digest.get(), EVP_sha256(), nullptr);
  forEachPiece(path, 0, [&](const char* bytes, std::size_t count) {
    EVP_DigestUpdate(digest.get(), bytes, count);
    size += static_cast<std::int64_t>(count);
  });
  unsigned char bytes[EVP_MAX_MD_SIZE];
  unsigned length = 0;
  EVP_DigestFinal_ex(digest.get(), bytes, &length);
  std::string hex;
  for (unsigned i = 0; i < length; ++i) {
    constexpr char digits[] = "0123456789abcdef";
    hex += {digits[bytes[i] >> 4], digits[bytes[i] & 0xF]};
  }
  return {type, size, hex};
}

void update(ModelStore& store, int version, const std::vector<std::string>& paths) {
  const std::vector<std::string> types = Capability::segmentation().types();
  std::vector<ModelFile> files;
  for (std::size_t i = 0; i < types.size(); ++i) {
    files.push_back(describe(types[i], paths.at(i)));
  }
  const std::unique_ptr<Update> update = store.begin(version, files);
  for (const ModelFile& file : update->missing()) {  // Only what is not there already.
    std::cerr << file.toString() << ", of " << update->remainingBytes() << " to come\n";
    const std::unique_ptr<ModelWriter> out = update->write(file);
    const std::string& path = file.type() == types[0] ? paths[0] : paths[1];
    forEachPiece(path, out->offset(),
                 [&](const char* bytes, std::size_t count) { out->write(bytes, count); });
    out->commit();  // Checked, synced, and part of the version.
  }
  update->activate();  // All files at once, or no change.
}

/// What a program does about a failure depends on its reason.
const char* advice(StoreError::Reason reason) {
  switch (reason) {
    case StoreError::Reason::NoRoom:
    case StoreError::Reason::DiskFull:
      return "make room and run it again";
    case StoreError::Reason::TooShort:
      return "run it again: it resumes";
    case StoreError::Reason::InUse:
      return "run it again when the other one has ended";
    default:
      return "report it";
  }
}

int run(const std::string& root, int version, const std::vector<std::string>& paths) {
  const std::unique_ptr<ModelStore> store =
      ModelStore::open(root, Capability::segmentation(), kBudget);
  if (!paths.empty()) {
    update(*store, version, paths);
    store->trimExcept({});
  } else {
    store->activate(version);
  }
  if (!store->verify().empty()) {
    std::cerr << "model_host: files were damaged; keep version " << version << " again\n";
    return EXIT_FAILURE;
  }
  const std::shared_ptr<const Snapshot> now = store->snapshot();
  for (const auto& [type, path] : now->paths) {
    std::cout << path << '\n';
  }
  return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3 && count != 5) {
    std::cerr << "usage: model_host ROOT VERSION [FILE FILE]\n";
    return 2;
  }
  softerror::setSink({&logSoftError, &std::cerr});
  try {
    return run(arguments[1], std::stoi(arguments[2]), {arguments + 3, arguments + count});
  } catch (const StoreError& error) {
    std::cerr << "model_host: " << error.what() << ": " << advice(error.reason()) << '\n';
  } catch (const std::exception& error) {
    std::cerr << "model_host: " << error.what() << '\n';
  }
  return EXIT_FAILURE;
}
