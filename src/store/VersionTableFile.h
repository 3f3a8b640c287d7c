#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "store/IDisk.h"
#include "store/VersionTable.h"

namespace zentrel::vistabase::ardelivery {

/// A table as stored on disk.
struct StoredTable {
  VersionTable table;
  /// CRC-32 of the index that goes with the table. Unset until the store has written an index.
  std::optional<std::uint32_t> indexCrc;
};

/// The file that holds a store's table. Replaced atomically; durable when `write` returns.
struct VersionTableFile {
  /// Returns nullopt if there is no such file. Throws json::Error if it is malformed, StoreError if
  /// it cannot be read, and NewerDocument.
  static std::optional<StoredTable> read(IDirectory& root);

  /// Throws StoreError (NoRoom) if the text would be longer than `read` accepts.
  static std::string print(const StoredTable& stored);
  static void write(IDirectory& root, const StoredTable& stored);
};

}  // namespace zentrel::vistabase::ardelivery
