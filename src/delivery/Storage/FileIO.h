#pragma once

#include "delivery/Storage/IFileIO.h"

namespace zentrel::vistabase::ardelivery {

/// Real files, through POSIX calls. Stateless.
class FileIO final : public IFileIO {
 public:
  std::string readFile(const std::string& path) override;
  void writeFile(const std::string& path, const std::string& content) override;
  void moveFile(const std::string& from, const std::string& to) override;
};

}  // namespace zentrel::vistabase::ardelivery
