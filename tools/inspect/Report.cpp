#include "tools/inspect/Report.h"

#include <algorithm>
#include <ctime>

#include "tools/inspect/Terminal.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

constexpr std::size_t kBytesBefore = 48;
constexpr std::size_t kBytesAfter = 24;

TextPlace placeOf(std::string_view text, std::size_t byte) {
  const std::string_view before = text.substr(0, byte);
  const std::size_t lineBreak = before.rfind('\n');
  const std::size_t lineStart = lineBreak == std::string_view::npos ? 0 : lineBreak + 1;
  const auto line = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')) + 1;
  return {byte, line, before.size() - lineStart + 1};
}

void cutOut(std::string_view text, const TextPlace& place, Damage& damage) {
  const std::size_t lineStart = place.byte + 1 - place.column;
  std::size_t begin = place.byte - std::min(place.byte - lineStart, kBytesBefore);
  std::size_t end = std::min({text.find('\n', place.byte), place.byte + kBytesAfter, text.size()});
  while (begin < place.byte && isContinuationByte(text[begin])) {
    ++begin;
  }
  while (end < text.size() && isContinuationByte(text[end])) {
    ++end;
  }
  const std::string before =
      (begin > lineStart ? "..." : "") + onePrintableLine(text.substr(begin, place.byte - begin));
  damage.excerpt = before + onePrintableLine(text.substr(place.byte, end - place.byte)) +
                   (end < text.size() && text[end] != '\n' ? "..." : "");
  damage.caret = width(before);
}

}  // namespace

Damage damageOf(const json::Error& error, std::string_view text) {
  Damage damage{onePrintableLine(error.cause()), error.path()};
  if (error.byte()) {
    damage.place = placeOf(text, *error.byte());
    cutOut(text, *damage.place, damage);
  }
  return damage;
}

std::string Damage::describe() const {
  if (place) {
    return "line " + std::to_string(place->line) + ", column " + std::to_string(place->column) +
           ": " + reason;
  }
  return (element.empty() ? "" : element + ": ") + reason;
}

std::int64_t Entry::size() const {
  return recordedSize.value_or(static_cast<std::int64_t>(sizeOnDisk.value_or(0)));
}

const char* Entry::state() const {
  if (!onDisk) {
    return "only recorded";
  }
  return recordedSize ? "present" : "only on disk";
}

std::string toDate(std::int64_t milliseconds, bool utc) {
  constexpr std::int64_t thousand = 1000;
  const auto seconds = static_cast<std::time_t>(milliseconds / thousand);
  std::tm parts = {};
  char text[64];
  if (milliseconds < 0 ||
      (utc ? gmtime_r(&seconds, &parts) : localtime_r(&seconds, &parts)) == nullptr ||
      std::strftime(text, sizeof text, utc ? "%Y-%m-%dT%H:%M:%SZ" : "%Y-%m-%d %H:%M:%S", &parts) ==
          0) {
    return std::to_string(milliseconds) + " ms";
  }
  return text;
}

}  // namespace zentrel::vistabase::ardelivery::inspect
