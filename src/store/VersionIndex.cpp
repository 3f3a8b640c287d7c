#include "store/VersionIndex.h"

#include <algorithm>
#include <optional>

#include "delivery/FileNames.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"
#include "store/Digest.h"

namespace zentrel::vistabase::ardelivery {
namespace {

/// Returns nullopt unless the key is DIGEST-TYPE.
std::optional<IndexedVersion::File> toFile(const ModelRecord& model) {
  const std::string& key = model.cacheKey;
  if (!isModelFileName(key)) {
    return std::nullopt;
  }
  return IndexedVersion::File{model.type, key.substr(0, kDigestLength), key};
}

}  // namespace

bool isModelFileName(const std::string& name) noexcept {
  const std::string_view text = name;
  return text.size() > kDigestLength + 1 && text.size() <= kLongestFileName &&
         text[kDigestLength] == '-' &&
         text.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos &&
         isDigest(text.substr(0, kDigestLength));
}

std::string printIndex(const VersionTable& table) {
  CacheDescriptor descriptor;
  for (const auto& version : table.versions) {
    VersionRecord record{version->number, {}};
    for (const VersionFile& file : version->files) {
      record.models.push_back({file.file.type(), file.name});
    }
    descriptor.versions.push_back(std::move(record));
  }
  std::stable_partition(
      descriptor.versions.begin(), descriptor.versions.end(),
      [&table](const VersionRecord& record) { return record.version != table.active; });
  return CacheDescriptorSerializer().serialize(descriptor);
}

std::vector<IndexedVersion> readIndex(const std::string& text) {
  std::vector<IndexedVersion> versions;
  const auto descriptor = CacheDescriptorSerializer().deserialize(text);
  for (const VersionRecord& record : descriptor->versions) {
    IndexedVersion version{record.version, {}};
    for (const ModelRecord& model : record.models) {
      if (const auto file = toFile(model)) {
        version.files.push_back(*file);
      }
    }
    if (!record.models.empty() && version.files.size() == record.models.size()) {
      versions.push_back(std::move(version));
    }
  }
  return versions;
}

}  // namespace zentrel::vistabase::ardelivery
