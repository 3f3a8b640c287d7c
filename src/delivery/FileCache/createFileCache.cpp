#include "delivery/FileCache/createFileCache.h"

#include <utility>

#include "delivery/FileCache/CacheEvictor.h"
#include "delivery/FileCache/CacheMetadataFilesystemSynchronizer.h"
#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/FileCache/FileCacheImpl.h"
#include "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging.h"
#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"

namespace zentrel::vistabase::ardelivery {

std::shared_ptr<IFileCache> createFileCache(const std::string& root, std::int64_t maxSize) {
  auto filesystem = quovix::make_shared_ref<FilesystemOperations>();
  auto synchronizer = quovix::make_unique_ref<CacheMetadataFilesystemSynchronizer>(filesystem);
  auto fileIO = quovix::make_unique_ref<FileIO>();
  auto serializer = quovix::make_unique_ref<CacheMetadataSerializer>();
  auto evictor = quovix::make_unique_ref<CacheEvictor>(maxSize);
  auto cache = std::make_shared<FileCacheImpl>(root, std::move(fileIO), std::move(serializer),
                                               std::move(synchronizer), std::move(filesystem),
                                               std::move(evictor));
  return std::make_shared<FileCacheWithErrorLogging>(std::move(cache));
}

}  // namespace zentrel::vistabase::ardelivery
