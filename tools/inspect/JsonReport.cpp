#include <boost/algorithm/hex.hpp>
#include <boost/describe/class.hpp>
#include <boost/json/value_from.hpp>

#include "support/json/JsonValue.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {

BOOST_DESCRIBE_STRUCT(Entry, (),
                      (name, state, recordedSize, lastAccess, sizeOnDisk, extraSize, evicted,
                       versions))
BOOST_DESCRIBE_STRUCT(Model, (), (type, cacheKey, name, size, recordedSize, sha256))
BOOST_DESCRIBE_STRUCT(Version, (), (version, active, size, models, capabilities))
BOOST_DESCRIBE_STRUCT(Finding, (), (name, text))
BOOST_DESCRIBE_STRUCT(Report, (),
                      (format, root, holds, holder, metadata, index, size, totalSize, budget, begin,
                       entries, others, versions, evictedVersions, verifiedFiles, findings,
                       damaged))

namespace {

/// Makes harmless UTF-8 of all strings, and keeps beside them the bytes of those that were none.
void makeText(JsonValue& value) {
  if (value.is_array()) {
    for (JsonValue& element : value.get_array()) {
      makeText(element);
    }
  } else if (value.is_object()) {
    boost::json::object added;
    for (auto& [name, member] : value.get_object()) {
      if (!member.is_string()) {
        makeText(member);
        continue;
      }
      const std::string bytes(member.get_string());
      const std::string text = toUtf8(bytes, [](std::string_view) { return "\xEF\xBF\xBD"; });
      if (text != bytes) {
        added[std::string(name) + "Hex"] = boost::algorithm::hex_lower(bytes);
        member = text;
      }
    }
    value.get_object().insert(added.begin(), added.end());
  }
}

std::string toLine(JsonValue value) {
  makeText(value);
  return json::write(value) + '\n';
}

}  // namespace

std::string toJson(const Report& report) {
  return toLine(boost::json::value_from(report));
}

std::string toJson(const std::string& root, const std::string& error) {
  return toLine({{"format", Report().format}, {"root", root}, {"error", error}});
}

}  // namespace zentrel::vistabase::ardelivery::inspect
