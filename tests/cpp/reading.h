#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"

namespace zentrel::vistabase::ardelivery {

/// What a document says, to compare: metadata lists its records in no order.
inline auto meaning(const ICacheMetadata& metadata) {
  std::map<std::string, std::pair<std::int64_t, std::int64_t>> records;
  for (const auto& [key, entry] : metadata.getEntries()) {
    records[key] = {entry.size, entry.lastAccess};
  }
  return records;
}

inline auto meaning(const CacheDescriptor& descriptor) {
  std::vector<std::string> records;
  for (const VersionRecord& version : descriptor.versions) {
    records.push_back(std::to_string(version.version));
    for (const ModelRecord& model : version.models) {
      records.push_back(model.type + '\0' + model.cacheKey);
    }
  }
  return records;
}

enum class Reading { Accepted, Refused, Wrong };

/// Reads any text. What is accepted has to mean the same after it was written and read again, and
/// with white space before it, which keeps the quick reader from it; what is refused has to be
/// quoted, and is refused with the white space too.
template <class Serializer>
Reading readingOf(const std::string& text) {
  Serializer serializer;
  bool isRefused = false;
  try {
    const auto document = serializer.deserialize(text);
    const std::string written = serializer.serialize(*document);
    if (meaning(*serializer.deserialize(written)) != meaning(*document)) {
      return Reading::Wrong;
    }
    if (!text.empty() && meaning(*serializer.deserialize(" " + text)) != meaning(*document)) {
      return Reading::Wrong;
    }
    return Reading::Accepted;
  } catch (const std::runtime_error& error) {
    // The texts end at the first zero byte.
    const std::string expected = "Deserializing failed: '" + text + "' with exception: ";
    isRefused = std::string(error.what()).find(expected.c_str()) == 0;
  }
  try {
    serializer.deserialize(" " + text);
    return Reading::Wrong;
  } catch (const std::runtime_error&) {
    return isRefused ? Reading::Refused : Reading::Wrong;
  }
}

}  // namespace zentrel::vistabase::ardelivery
