#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zentrel::vistabase::ardelivery::bench {

/// A cache root with a given number of committed entries, each a small file with extra bytes: the
/// cache reads no contents, so that their size plays no part. Deleted when destroyed.
class Fixture {
 public:
  static constexpr std::int64_t kEntryBytes = 64;
  static constexpr int kVersion = 7;

  /// Replaces what lies at `root`. Needs at least 6 entries.
  Fixture(std::string root, std::size_t entries);
  Fixture(const Fixture&) = delete;
  Fixture& operator=(const Fixture&) = delete;
  ~Fixture();

  /// Undoes what an operation did: the first `entries` entries, their extra bytes and the metadata
  /// file are as at the start, and the new key has no file. Entry 0 is the least recently used.
  void restore(std::size_t entries) const;
  void restore() const { restore(keys.size()); }
  void writeEntry(const std::string& path) const;

  /// Records the first four entries as the models of `kVersion`, in an index that is an entry too.
  void addVersion() const;

  const std::string root;
  const std::string metadataFile;
  const std::string extraDirectory;
  const std::int64_t budget;      ///< Exactly what the entries take.
  std::vector<std::string> keys;  ///< As a model's file would be called, by age.
  std::vector<std::string> paths;
  std::vector<std::string> extraPaths;
  std::vector<std::string> listedExtraPaths;  ///< In the order in which the cache reads them.
  std::string newKey;                         ///< A key that is not in the cache.
  std::string newPath;
  std::string newExtraPath;
  std::string metadata;      ///< The text of the metadata file.
  std::size_t recordLength;  ///< What one record takes of it.
};

}  // namespace zentrel::vistabase::ardelivery::bench
