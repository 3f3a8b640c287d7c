#include "delivery/FileCache/CacheMetadataFilesystemSynchronizer.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "delivery/FileCache/CacheMetadata.h"

namespace zentrel::vistabase::ardelivery {

CacheMetadataFilesystemSynchronizer::CacheMetadataFilesystemSynchronizer(
    quovix::shared_ref<IFilesystemOperations> filesystem) noexcept
    : filesystem_(std::move(filesystem)) {}

SynchronizationResult CacheMetadataFilesystemSynchronizer::synchronize(
    std::unique_ptr<ICacheMetadata> metadata, const boost::filesystem::path& root,
    const std::unordered_set<std::string>& ignoredNames) {
  auto entries = metadata->getEntries();
  // Leaves in `names` those without a record. A record is stale if its name does not exist; records
  // with the same name are treated alike.
  std::unordered_set<std::string> names = filesystem_->listDirectory(root);
  std::unordered_set<std::string> recorded;
  recorded.reserve(entries.size());
  const auto isStale = [&names, &recorded](const auto& record) {
    auto node = names.extract(record.first);
    return node.empty() ? recorded.count(record.first) == 0
                        : (recorded.insert(std::move(node)), false);
  };
  const auto firstStale = std::remove_if(entries.begin(), entries.end(), isStale);

  std::vector<std::pair<std::string, CacheMetadataEntry>> added;
  for (const std::string& name : names) {
    const bool isHidden = name.compare(0, 1, ".") == 0;
    if (!isHidden && ignoredNames.count(name) == 0) {
      CacheMetadataEntry entry;
      entry.size = static_cast<std::int64_t>(filesystem_->getSize(root / name));
      added.emplace_back(name, entry);
    }
  }
  if (added.empty() && firstStale == entries.end()) {
    return {std::move(metadata), false};
  }
  entries.erase(firstStale, entries.end());
  std::move(added.begin(), added.end(), std::back_inserter(entries));
  return {std::make_unique<CacheMetadata>(std::move(entries)), true};
}

}  // namespace zentrel::vistabase::ardelivery
