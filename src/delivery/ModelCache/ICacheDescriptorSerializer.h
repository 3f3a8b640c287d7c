#pragma once

#include <memory>
#include <string>

#include "delivery/ModelCache/CacheDescriptor.h"

namespace zentrel::vistabase::ardelivery {

/// The text format of the index. Failures are std::runtime_error.
class ICacheDescriptorSerializer {
 public:
  /// Returns the text of the index.
  virtual std::string serialize(const CacheDescriptor& descriptor) = 0;

  /// Parses an index; an empty text is an empty one. Never returns null.
  virtual std::unique_ptr<CacheDescriptor> deserialize(const std::string& text) = 0;

  virtual ~ICacheDescriptorSerializer() = default;
};

}  // namespace zentrel::vistabase::ardelivery
