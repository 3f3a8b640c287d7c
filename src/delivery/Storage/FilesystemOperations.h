#pragma once

#include "delivery/Storage/IFilesystemOperations.h"

namespace zentrel::vistabase::ardelivery {

/// The real filesystem. Stateless.
class FilesystemOperations final : public IFilesystemOperations {
 public:
  bool isFile(const boost::filesystem::path& path) override;
  bool createDirectories(const boost::filesystem::path& path) override;
  bool exists(const boost::filesystem::path& path) override;
  bool remove(const boost::filesystem::path& path) override;
  bool removeAll(const boost::filesystem::path& path) override;
  std::uint64_t getSize(const boost::filesystem::path& path) override;
  std::unordered_set<std::string> listDirectory(const boost::filesystem::path& path) override;
};

}  // namespace zentrel::vistabase::ardelivery
