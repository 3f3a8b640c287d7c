#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zentrel::vistabase::ardelivery {

/// The record of one entry.
struct CacheMetadataEntry {
  std::int64_t size = 0;        ///< Bytes.
  std::int64_t lastAccess = 0;  ///< Milliseconds since the Unix epoch, by the system clock.
  bool locked = false;          ///< In memory only; lost on reload.
};

/// Adds sizes that come from a file and may have any value: wraps around, where signed arithmetic
/// would be undefined.
inline std::int64_t wrappingAdd(std::int64_t left, std::int64_t right) noexcept {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(left) +
                                   static_cast<std::uint64_t>(right));
}

inline std::int64_t wrappingSubtract(std::int64_t left, std::int64_t right) noexcept {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(left) -
                                   static_cast<std::uint64_t>(right));
}

/// The records of all entries by name, with the running total of their sizes. Names are file names,
/// that is, escaped keys. Operations on an absent name do nothing, except lockEntry.
class ICacheMetadata {
 public:
  virtual ~ICacheMetadata() = default;

  /// Returns the total in bytes. It wraps around, since a metadata file may contain any sizes.
  virtual std::int64_t getTotalSize() const = 0;

  /// Locks the record without changing its access time, or adds a locked one of size 0, accessed
  /// now.
  virtual void lockEntry(const std::string& name) = 0;
  /// Clears the lock.
  virtual void unlockEntry(const std::string& name) = 0;
  /// Sets the size, in bytes.
  virtual void setEntrySize(const std::string& name, std::int64_t size) = 0;

  /// Sets the last access to now.
  virtual void touchEntry(const std::string& name) = 0;
  /// Whether there is a record of that name.
  virtual bool hasEntry(const std::string& name) const = 0;
  /// Drops the record.
  virtual void removeEntry(const std::string& name) = 0;
  /// Drops every record.
  virtual void clearEntries() = 0;

  /// Returns a copy of every record, in no particular order.
  virtual std::vector<std::pair<std::string, CacheMetadataEntry>> getEntries() const = 0;
};

}  // namespace zentrel::vistabase::ardelivery
