#pragma once

#include <cstddef>
#include <cstdint>

namespace zentrel::vistabase::ardelivery {

/// Writes an entry of a FileStore or a file of a ModelStore to a temporary file; only `commit`
/// makes it one. Any thread. It may outlive its store, and then throws UsageError.
///
/// Where the content is known beforehand, the bytes that an earlier writer got are kept: begin at
/// `offset`, or `restart`.
class EntryWriter {
 public:
  /// Closes it.
  virtual ~EntryWriter() = default;

  /// Where the next byte that is written comes to lie. If that is the whole size of known content,
  /// there is nothing left to fetch: commit.
  virtual std::int64_t offset() const = 0;

  /// Appends bytes. A writer that fails is closed. Of known content, too many bytes are StoreError
  /// WrongContent, and all of them are dropped.
  virtual void write(const void* bytes, std::size_t count) = 0;

  /// Drops what has been written.
  virtual void restart() = 0;

  /// Makes what was written the entry and closes the writer, also when it throws.
  ///
  /// If the content is known, bytes missing at the end are StoreError TooShort: what came is kept,
  /// for the next writer to resume. The wrong bytes are WrongContent, and dropped.
  virtual void commit() = 0;

  /// Ends the writing without an entry. Calling it again does nothing.
  virtual void close() = 0;
};

}  // namespace zentrel::vistabase::ardelivery
