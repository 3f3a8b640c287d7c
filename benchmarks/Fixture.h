#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zentrel::vistabase::ardelivery::bench {

/// A cache root with a given number of committed entries, each a small file with extra bytes: the
/// cache reads no contents, so that their size plays no part. One entry is the index of a version
/// of face tracking, whose models are four others. Deleted when destroyed.
class Fixture {
 public:
  static constexpr std::int64_t kEntryBytes = 64;
  static constexpr int kVersion = 7;

  /// Replaces what lies at `root`. Needs at least 6 entries.
  Fixture(std::string root, std::size_t entries);
  Fixture(const Fixture&) = delete;
  Fixture& operator=(const Fixture&) = delete;
  ~Fixture();

  /// Undoes what an operation did to entries, extra bytes or metadata file.
  void restore() const;

  const std::string root;
  const std::string metadataFile;
  const std::string extraDirectory;
  const std::int64_t budget;      ///< Exactly what the entries take, as it is recorded.
  std::vector<std::string> keys;  ///< As a model's file would be called; the oldest comes first.
  std::vector<std::string> paths;
  std::vector<std::string> extraPaths;
  std::vector<std::string> modelPaths;  ///< In the order in which a version is looked up.
  std::string newKey;                   ///< A key that is not in the cache.
  std::string newExtraPath;
  std::string metadata;      ///< The text of the metadata file.
  std::size_t recordLength;  ///< What one record takes of it.

 private:
  std::string index_;
};

}  // namespace zentrel::vistabase::ardelivery::bench
