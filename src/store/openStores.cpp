#include "store/DiskFileStore.h"
#include "store/DiskModelStore.h"
#include "store/OpenSslDigest.h"
#include "store/PosixDisk.h"

// How C++ programs open stores. The library that a JVM loads uses another digest instead.
namespace zentrel::vistabase::ardelivery {
namespace {

StoreEnvironment environment() {
  return {&openPosixRoot, &newOpenSslDigest};
}

}  // namespace

std::unique_ptr<FileStore> FileStore::open(const std::string& root, std::int64_t maxSizeBytes) {
  return DiskFileStore::open(root, maxSizeBytes, environment());
}

std::unique_ptr<ModelStore> ModelStore::open(const std::string& root, const Capability& capability,
                                             std::int64_t maxSizeBytes) {
  return DiskModelStore::open(root, capability, maxSizeBytes, environment());
}

}  // namespace zentrel::vistabase::ardelivery
