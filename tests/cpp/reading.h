#pragma once

#include <map>
#include <stdexcept>
#include <string>

#include "delivery/FileCache/CacheMetadataSerializer.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"

namespace zentrel::vistabase::ardelivery {

/// What a document says, for comparison: metadata lists its records in no order.
inline auto meaning(const ICacheMetadata& metadata) {
  std::map<std::string, std::pair<std::int64_t, std::int64_t>> records;
  for (const auto& [key, entry] : metadata.getEntries()) {
    records[key] = {entry.size, entry.lastAccess};
  }
  return records;
}

/// In short: "1: t=a u=b; 2: t=a; "
inline std::string meaning(const CacheDescriptor& descriptor) {
  std::string text;
  for (const VersionRecord& version : descriptor.versions) {
    text += std::to_string(version.version) + ":";
    for (const ModelRecord& model : version.models) {
      text += " " + model.type + "=" + model.cacheKey;
    }
    text += "; ";
  }
  return text;
}

enum class Reading { Accepted, Refused, Wrong };

/// Reads any text, also with white space before it, which bypasses the quick reader. Both have to
/// agree; what is accepted must mean the same once written and read again, and what is refused must
/// be quoted.
template <class Serializer>
Reading readingOf(const std::string& text) {
  Serializer serializer;
  int accepted = 0;
  for (const std::string& each : {text, text.empty() ? text : " " + text}) {
    try {
      const auto document = serializer.deserialize(each);
      const auto again = serializer.deserialize(serializer.serialize(*document));
      if (meaning(*again) != meaning(*document) ||
          meaning(*serializer.deserialize(text)) != meaning(*document)) {
        return Reading::Wrong;
      }
      ++accepted;
    } catch (const std::runtime_error& error) {
      // Messages end at the first zero byte.
      const std::string expected = "Deserializing failed: '" + each + "' with exception: ";
      if (std::string(error.what()).find(expected.c_str()) != 0) {
        return Reading::Wrong;
      }
    }
  }
  return accepted == 1 ? Reading::Wrong : accepted == 2 ? Reading::Accepted : Reading::Refused;
}

}  // namespace zentrel::vistabase::ardelivery
