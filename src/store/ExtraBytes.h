#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "store/IDisk.h"

namespace zentrel::vistabase::ardelivery {

/// The extra bytes of entries, as the raw file cache keeps them: bare, in the directory "extra",
/// under the names of their entries. They never outlive the content that they were given to, also
/// not through a power cut. Throws StoreError.
class ExtraBytes {
 public:
  explicit ExtraBytes(IDirectory& root) noexcept : root_(root) {}

  /// None if the entry has none.
  std::optional<std::string> read(const std::string& name);
  /// Has the bytes take the place of those that the entry has. They last when this returns.
  void replace(const std::string& name, std::string_view bytes);
  /// Removes the entry's extra bytes, which lasts when this returns, before its content changes.
  /// Returns what was there, to be put back if the content then does not change after all.
  std::optional<std::string> remove(const std::string& name);

 private:
  /// Null if there is no such directory.
  std::unique_ptr<IDirectory> open();

  IDirectory& root_;
};

}  // namespace zentrel::vistabase::ardelivery
