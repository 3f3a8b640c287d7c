#include "delivery/FileCache/CacheMetadataFilesystemSynchronizer.h"

#include <algorithm>
#include <iterator>
#include <string_view>
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
  std::unordered_set<std::string_view> recordedNames;
  for (const auto& [name, entry] : entries) {
    recordedNames.insert(name);
  }
  const std::unordered_set<std::string> listedNames = filesystem_->listDirectory(root);

  std::vector<std::pair<std::string, CacheMetadataEntry>> added;
  for (const std::string& name : listedNames) {
    const bool isHidden = name.compare(0, 1, ".") == 0;
    if (!isHidden && ignoredNames.count(name) == 0 && recordedNames.count(name) == 0) {
      CacheMetadataEntry entry;
      entry.size = static_cast<std::int64_t>(filesystem_->getSize(root / name));
      added.emplace_back(name, entry);
    }
  }
  const auto firstGone = std::remove_if(
      entries.begin(), entries.end(),
      [&listedNames](const auto& record) { return listedNames.count(record.first) == 0; });
  if (added.empty() && firstGone == entries.end()) {
    return {std::move(metadata), false};
  }
  entries.erase(firstGone, entries.end());
  std::move(added.begin(), added.end(), std::back_inserter(entries));
  return {std::make_unique<CacheMetadata>(std::move(entries)), true};
}

}  // namespace zentrel::vistabase::ardelivery
