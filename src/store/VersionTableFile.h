#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "store/IDisk.h"
#include "store/VersionTable.h"

namespace zentrel::vistabase::ardelivery {

/// A table as it lies on disk.
struct StoredTable {
  VersionTable table;
  /// CRC-32 of the index that goes with the table. None for as long as the index is not the
  /// store's.
  std::optional<std::uint32_t> indexCrc;
};

/// The file of a store's versions. It is replaced at once, and lasts when `write` returns.
struct VersionTableFile {
  /// None if there is no such file. Throws json::Error or StoreError for one that makes no sense or
  /// cannot be read, and NewerDocument.
  static std::optional<StoredTable> read(IDirectory& root);

  /// Throws StoreError as NoRoom if the text would be longer than `read` takes.
  static std::string print(const StoredTable& stored);
  static void write(IDirectory& root, const StoredTable& stored);
};

}  // namespace zentrel::vistabase::ardelivery
