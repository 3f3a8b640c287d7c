#include <boost/describe/class.hpp>
#include <boost/json/value_from.hpp>
#include <cstdio>

#include "support/json/JsonValue.h"
#include "support/util/Utf.h"
#include "tools/inspect/Terminal.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {

BOOST_DESCRIBE_STRUCT(OwnFile, (), (present, readable, damage))
BOOST_DESCRIBE_STRUCT(Entry, (),
                      (name, state, recordedSize, lastAccess, sizeOnDisk, extraSize, evicted,
                       versions))
BOOST_DESCRIBE_STRUCT(Group, (), (name, size, files))
BOOST_DESCRIBE_STRUCT(Model, (), (type, cacheKey, name, size, recordedSize, sha256, shared))
BOOST_DESCRIBE_STRUCT(Capability, (), (name, missing))
BOOST_DESCRIBE_STRUCT(Version, (), (version, active, size, models, capabilities))
BOOST_DESCRIBE_STRUCT(Finding, (), (name, text))
BOOST_DESCRIBE_STRUCT(Report, (),
                      (root, metadata, index, table, groups, totalSize, budget, entries, others,
                       versions, verifiedFiles, findings))

namespace {

/// Makes UTF-8 of all strings, and keeps beside them the bytes of those that were none.
void makeText(JsonValue& value) {
  if (value.is_array()) {
    for (JsonValue& element : value.get_array()) {
      makeText(element);
    }
  } else if (value.is_object()) {
    boost::json::object bytes;
    for (auto& [name, member] : value.get_object()) {
      if (!member.is_string()) {
        makeText(member);
        continue;
      }
      const std::string text = toUtf8(std::string_view(member.get_string()), false,
                                      [](std::string_view) { return "\xEF\xBF\xBD"; });
      if (text != std::string_view(member.get_string())) {
        bytes[std::string(name) + "Hex"] = toHex(member.get_string());
        member = text;
      }
    }
    value.get_object().insert(bytes.begin(), bytes.end());
  }
}

std::string toLine(JsonValue value) {
  makeText(value);
  return toUtf8(json::write(value), true,
                [](std::string_view run) {
                  std::size_t begin = 0;
                  char code[16];
                  std::snprintf(code, sizeof code, "\\u%04x",
                                static_cast<unsigned>(decodeUtf8(run, begin).value_or(0)));
                  return std::string(code);
                }) +
         '\n';
}

}  // namespace

std::string toHex(std::string_view bytes) {
  std::string digits;
  for (const char byte : bytes) {
    char pair[3];
    std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned char>(byte));
    digits += pair;
  }
  return digits;
}

std::string toJson(const Report& report) {
  return toLine(boost::json::value_from(report));
}

std::string toJson(const std::string& root, const std::string& error) {
  return toLine({{"root", root}, {"error", error}});
}

}  // namespace zentrel::vistabase::ardelivery::inspect
