#include "store/CheckedDocument.h"
#include "support/util/joined.h"

#include <boost/crc.hpp>
#include <cstddef>

namespace zentrel::vistabase::ardelivery {
namespace {

constexpr std::int64_t kFormat = 1;
constexpr std::string_view kCheck = ",\"crc32\":";

}  // namespace

std::uint32_t crc32(std::string_view bytes) {
  boost::crc_32_type sum;
  sum.process_bytes(bytes.data(), bytes.size());
  return sum.checksum();
}

std::string printChecked(const boost::json::object& members) {
  boost::json::object document{{"format", kFormat}};
  document.insert(members.begin(), members.end());
  std::string text = json::write(std::move(document));
  text.pop_back();  // The closing brace.
  return joined(text, kCheck, crc32(text), "}");
}

JsonValue parseChecked(std::string_view text) {
  JsonValue document = json::parse(text);
  const std::size_t end = text.rfind(kCheck);
  if (end == std::string_view::npos ||
      json::member(document, "crc32", &json::toInt64) != crc32(text.substr(0, end))) {
    throw json::Error("the checksum is wrong");
  }
  const std::int64_t format = json::member(document, "format", &json::toInt64);
  if (format > kFormat) {
    throw NewerDocument(joined("written by a newer release, in format ", format));
  }
  return document;
}

}  // namespace zentrel::vistabase::ardelivery
