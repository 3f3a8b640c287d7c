#pragma once

#include <cstddef>
#include <cstdint>

namespace zentrel::vistabase::ardelivery {

/// Writes an entry of a FileStore, or a file of a ModelStore, to a temporary file; only `commit`
/// puts it in place. Thread-safe. May outlive its store, and then throws UsageError.
///
/// If the content is known in advance, bytes from an earlier writer are kept: continue at `offset`,
/// or call `restart`.
class EntryWriter {
 public:
  /// Closes the writer.
  virtual ~EntryWriter() = default;

  /// Returns the position of the next byte to write. At the full size of known content, nothing is
  /// left to fetch: commit.
  virtual std::int64_t offset() const = 0;

  /// Appends bytes. A failure closes the writer. Writing more than the size of known content throws
  /// StoreError (WrongContent) and drops everything written.
  virtual void write(const void* bytes, std::size_t count) = 0;

  /// Drops everything written so far.
  virtual void restart() = 0;

  /// Puts what was written in place as the entry. Closes the writer, even if it throws.
  ///
  /// Known content is checked. If bytes are missing at the end, throws StoreError (TooShort) and
  /// keeps those received for the next writer to resume. If the bytes are wrong, throws StoreError
  /// (WrongContent) and drops them.
  virtual void commit() = 0;

  /// Stops writing without creating an entry. Idempotent.
  virtual void close() = 0;
};

}  // namespace zentrel::vistabase::ardelivery
