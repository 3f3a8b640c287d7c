#pragma once

#include <string>

#include "delivery/FileCache/ICacheMetadata.h"
#include "support/util/memory/unique_ref.h"

namespace zentrel::vistabase::ardelivery {

/// The text format of the metadata file. Failures are std::runtime_error.
class ICacheMetadataSerializer {
 public:
  virtual ~ICacheMetadataSerializer() = default;

  /// Returns the text of the metadata, without the locks.
  virtual std::string serialize(const ICacheMetadata& metadata) = 0;

  /// Returns new metadata with the entries in `text`, all unlocked; none for an empty text.
  virtual quovix::unique_ref<ICacheMetadata> deserialize(const std::string& text) = 0;
};

}  // namespace zentrel::vistabase::ardelivery
