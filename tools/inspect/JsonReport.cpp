#include "tools/inspect/JsonReport.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <utility>

#include "support/json/JsonValue.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

template <class Number>
JsonValue orNull(const std::optional<Number>& number) {
  return number ? JsonValue(static_cast<std::int64_t>(*number)) : JsonValue(nullptr);
}

boost::json::array strings(const std::vector<std::string>& texts) {
  boost::json::array result;
  for (const std::string& text : texts) {
    result.emplace_back(text);
  }
  return result;
}

template <class Item, class Convert>
boost::json::array array(const std::vector<Item>& items, const Convert& convert) {
  boost::json::array result;
  for (const Item& item : items) {
    result.push_back(convert(item));
  }
  return result;
}

boost::json::object toObject(const OwnFile& file) {
  boost::json::object result{
      {"state", file.damage ? "damaged" : (file.present ? "present" : "missing")}};
  if (const auto& damage = file.damage) {
    result["reason"] = damage->reason;
    if (damage->place) {
      result["byte"] = damage->place->byte;
      result["line"] = damage->place->line;
      result["column"] = damage->place->column;
    }
    if (!damage->element.empty()) {
      result["element"] = damage->element;
    }
  }
  return result;
}

boost::json::object toObject(const Entry& entry) {
  return {
      {"name", entry.name},
      {"state", entry.state()},
      {"recordedSize", orNull(entry.recordedSize)},
      {"sizeOnDisk", orNull(entry.sizeOnDisk)},
      {"lastAccess", orNull(entry.lastAccess)},
      {"lastAccessDate", entry.lastAccess.value_or(0) == 0
                             ? JsonValue(nullptr)
                             : JsonValue(toDate(*entry.lastAccess, true))},
      {"extraSize", orNull(entry.extraSize)},
  };
}

boost::json::object toObject(const Model& model) {
  return {{"type", model.type}, {"cacheKey", model.cacheKey}, {"present", model.present}};
}

boost::json::object toObject(const Capability& capability) {
  return {{"name", capability.name},
          {"complete", capability.missing.empty()},
          {"missing", strings(capability.missing)}};
}

boost::json::object toObject(const Version& version) {
  return {
      {"version", version.number},
      {"models", array(version.models, [](const Model& model) { return toObject(model); })},
      {"capabilities", array(version.capabilities,
                             [](const Capability& capability) { return toObject(capability); })},
  };
}

}  // namespace

std::string toJson(const Report& report) {
  boost::json::object root{
      {"root", report.root},
      {"metadata", toObject(report.metadata)},
      {"entries", array(report.entries, [](const Entry& entry) { return toObject(entry); })},
      {"totalSize", report.totalSize},
      {"budget", orNull(report.budget)},
      {"evictedNext", strings(report.evictedNext)},
      {"index", toObject(report.index)},
      {"versions",
       array(report.versions, [](const Version& version) { return toObject(version); })},
      {"findings", strings(report.findings)},
  };
  return json::write(std::move(root)) + '\n';
}

}  // namespace zentrel::vistabase::ardelivery::inspect
