#include "delivery/FileCache/recoverMetadata.h"

#include <boost/filesystem/path.hpp>
#include <exception>

#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/FileNames.h"
#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"

namespace zentrel::vistabase::ardelivery {
namespace {

namespace fs = boost::filesystem;

bool isDamaged(const fs::path& file, IFileIO& fileIO, IFilesystemOperations& filesystem) {
  if (!filesystem.isFile(file)) {
    return filesystem.exists(file);
  }
  const std::string text = fileIO.readFile(file.string());
  try {
    CacheMetadataSerializer().deserialize(text);
    return false;
  } catch (const std::exception&) {
    return true;
  }
}

}  // namespace

MetadataRecovery recoverMetadata(const std::string& root, IFileIO& fileIO,
                                 IFilesystemOperations& filesystem) {
  const fs::path file = fs::path(root) / kMetadataName;
  const fs::path aside = fs::path(root) / kDamagedMetadataName;
  if (!isDamaged(file, fileIO, filesystem)) {
    return MetadataRecovery::NothingToMend;
  }
  if (!filesystem.isFile(file) || !filesystem.isFile(aside)) {
    filesystem.removeAll(aside);  // A rename cannot replace a directory.
  }
  fileIO.moveFile(file.string(), aside.string());
  if (isDamaged(aside, fileIO, filesystem)) {
    return MetadataRecovery::SetAside;
  }
  // The file renamed is not the one read: a cache replaced it in between.
  if (filesystem.exists(file)) {
    filesystem.remove(aside);
  } else {
    fileIO.moveFile(aside.string(), file.string());
  }
  return MetadataRecovery::NothingToMend;
}

MetadataRecovery recoverMetadata(const std::string& root) {
  FileIO fileIO;
  FilesystemOperations filesystem;
  return recoverMetadata(root, fileIO, filesystem);
}

}  // namespace zentrel::vistabase::ardelivery
