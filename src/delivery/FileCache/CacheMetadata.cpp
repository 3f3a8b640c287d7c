#include "delivery/FileCache/CacheMetadata.h"

#include <chrono>

namespace zentrel::vistabase::ardelivery {
namespace {

std::int64_t nowInMilliseconds() {
  const std::chrono::nanoseconds sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return sinceEpoch.count() / 1'000'000;
}

}  // namespace

CacheMetadata::CacheMetadata(std::vector<std::pair<std::string, CacheMetadataEntry>> entries) {
  for (auto& record : entries) {
    totalSize_ = wrappingAdd(totalSize_, record.second.size);
    entries_.insert(std::move(record));
  }
}

std::int64_t CacheMetadata::getTotalSize() const {
  return totalSize_;
}

void CacheMetadata::lockEntry(const std::string& name) {
  const auto [position, added] = entries_.try_emplace(name);
  position->second.locked = true;
  if (added) {
    position->second.lastAccess = nowInMilliseconds();
  }
}

void CacheMetadata::unlockEntry(const std::string& name) {
  if (CacheMetadataEntry* const entry = find(name)) {
    entry->locked = false;
  }
}

void CacheMetadata::setEntrySize(const std::string& name, std::int64_t size) {
  if (CacheMetadataEntry* const entry = find(name)) {
    totalSize_ = wrappingAdd(wrappingSubtract(totalSize_, entry->size), size);
    entry->size = size;
  }
}

void CacheMetadata::touchEntry(const std::string& name) {
  if (CacheMetadataEntry* const entry = find(name)) {
    entry->lastAccess = nowInMilliseconds();
  }
}

bool CacheMetadata::hasEntry(const std::string& name) const {
  return entries_.count(name) != 0;
}

void CacheMetadata::removeEntry(const std::string& name) {
  const auto position = entries_.find(name);
  if (position != entries_.end()) {
    totalSize_ = wrappingSubtract(totalSize_, position->second.size);
    entries_.erase(position);
  }
}

void CacheMetadata::clearEntries() {
  totalSize_ = 0;
  entries_.clear();
}

std::vector<std::pair<std::string, CacheMetadataEntry>> CacheMetadata::getEntries() const {
  std::vector<std::pair<std::string, CacheMetadataEntry>> entries;
  entries.reserve(entries_.size());
  entries.assign(entries_.begin(), entries_.end());
  return entries;
}

CacheMetadataEntry* CacheMetadata::find(const std::string& name) {
  const auto position = entries_.find(name);
  return position == entries_.end() ? nullptr : &position->second;
}

}  // namespace zentrel::vistabase::ardelivery
