#pragma once

#include <unordered_map>

#include "delivery/FileCache/ICacheMetadata.h"

namespace zentrel::vistabase::ardelivery {

/// The records in a hash table.
class CacheMetadata final : public ICacheMetadata {
 public:
  /// Without records.
  CacheMetadata() = default;

  /// If several records have one name, keeps the first. The total counts all of them: until the
  /// next change, it is the sum of what the metadata file says.
  explicit CacheMetadata(std::vector<std::pair<std::string, CacheMetadataEntry>> entries);

  std::int64_t getTotalSize() const override;
  void lockEntry(const std::string& name) override;
  void unlockEntry(const std::string& name) override;
  void setEntrySize(const std::string& name, std::int64_t size) override;
  void touchEntry(const std::string& name) override;
  bool hasEntry(const std::string& name) const override;
  void removeEntry(const std::string& name) override;
  void clearEntries() override;
  std::vector<std::pair<std::string, CacheMetadataEntry>> getEntries() const override;

 private:
  CacheMetadataEntry* find(const std::string& name);

  std::int64_t totalSize_ = 0;
  std::unordered_map<std::string, CacheMetadataEntry> entries_{10};
};

}  // namespace zentrel::vistabase::ardelivery
