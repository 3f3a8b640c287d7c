#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

/// Reads, writes and renames whole files. Contents are byte strings.
class IFileIO {
 public:
  virtual ~IFileIO() = default;

  /// Returns the whole content. Any failure is std::runtime_error "Could not open file.".
  virtual std::string readFile(const std::string& path) = 0;

  /// Creates or truncates the file and writes exactly `content`. Any failure is std::runtime_error
  /// "Could not open file."; the file may then be truncated or partly written. Neither synced nor
  /// atomic: a caller that must not lose the old content writes to another file and moves it.
  virtual void writeFile(const std::string& path, const std::string& content) = 0;

  /// Renames, replacing an existing file at `to`. Throws boost::filesystem::filesystem_error.
  virtual void moveFile(const std::string& from, const std::string& to) = 0;
};

}  // namespace zentrel::vistabase::ardelivery
