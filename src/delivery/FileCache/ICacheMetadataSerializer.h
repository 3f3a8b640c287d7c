#pragma once

#include <string>

#include "delivery/FileCache/ICacheMetadata.h"
#include "support/util/memory/unique_ref.h"

namespace zentrel::vistabase::ardelivery {

/// The text format of the metadata file. Failures are std::runtime_error.
class ICacheMetadataSerializer {
 public:
  virtual ~ICacheMetadataSerializer() = default;

  /// The text of the metadata, without the locks.
  virtual std::string serialize(const ICacheMetadata& metadata) = 0;

  /// New metadata with the entries of `text`, all unlocked; the empty text has none.
  virtual quovix::unique_ref<ICacheMetadata> deserialize(const std::string& text) = 0;
};

}  // namespace zentrel::vistabase::ardelivery
