#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

/// Contents of whole files, as byte strings, and renames.
class IFileIO {
 public:
  virtual ~IFileIO() = default;

  /// The whole content. Throws std::runtime_error "Could not open file." whatever failed.
  virtual std::string readFile(const std::string& path) = 0;

  /// Creates or truncates the file and writes exactly `content`. Throws std::runtime_error "Could
  /// not open file." whatever failed; the file may then be truncated or partly written. Neither
  /// synced nor atomic: a caller whose old content must survive writes elsewhere and moves.
  virtual void writeFile(const std::string& path, const std::string& content) = 0;

  /// Renames, replacing an existing file at `to`. Throws boost::filesystem::filesystem_error.
  virtual void moveFile(const std::string& from, const std::string& to) = 0;
};

}  // namespace zentrel::vistabase::ardelivery
