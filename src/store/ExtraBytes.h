#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "store/IDisk.h"

namespace zentrel::vistabase::ardelivery {

/// The extra bytes of entries, stored as the raw file cache stores them: unframed, in the directory
/// "extra", under the entry's name. They never outlive the content that they were attached to, even
/// across a power cut. Throws StoreError.
class ExtraBytes {
 public:
  explicit ExtraBytes(IDirectory& root) noexcept : root_(root) {}

  /// Returns nullopt if the entry has none.
  std::optional<std::string> read(const std::string& name);
  /// Replaces the entry's extra bytes. Durable on return.
  void replace(const std::string& name, std::string_view bytes);
  /// Removes the entry's extra bytes, before its content changes. Durable on return. Returns them
  /// so that they can be restored if the content does not change after all.
  std::optional<std::string> remove(const std::string& name);

 private:
  /// Returns null if there is no such directory.
  std::unique_ptr<IDirectory> open();

  IDirectory& root_;
};

}  // namespace zentrel::vistabase::ardelivery
