#include "tools/inspect/Damage.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <exception>
#include <string_view>
#include <utility>

#include "support/json/JsonValue.h"
#include "tools/inspect/Terminal.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

constexpr std::size_t kBytesBefore = 48;
constexpr std::size_t kBytesAfter = 24;
constexpr std::size_t kElementBytes = 72;

/// The cause alone: the library's message quotes the whole text before it.
std::string causeOf(const std::string& message, const std::string& text) {
  constexpr std::string_view marker = "exception: ";
  const std::size_t quoted = message.find(text);
  const std::size_t found =
      quoted == std::string::npos ? quoted : message.find(marker, quoted + text.size());
  return found == std::string::npos ? message : message.substr(found + marker.size());
}

TextPlace placeOf(std::string_view text, std::size_t byte) {
  const std::string_view before = text.substr(0, byte);
  const std::size_t lineBreak = before.rfind('\n');
  const std::size_t lineStart = lineBreak == std::string_view::npos ? 0 : lineBreak + 1;
  const auto line = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')) + 1;
  return {byte, line, before.size() - lineStart + 1};
}

void cutOut(std::string_view text, Damage& damage) {
  const std::size_t place = damage.place->byte;
  const std::size_t lineStart = place + 1 - damage.place->column;
  std::size_t begin = place - std::min(place - lineStart, kBytesBefore);
  std::size_t end = std::min({text.find('\n', place), place + kBytesAfter, text.size()});
  while (begin < place && isContinuationByte(text[begin])) {
    ++begin;
  }
  while (end < text.size() && isContinuationByte(text[end])) {
    ++end;
  }
  const std::string before =
      (begin > lineStart ? "..." : "") + onePrintableLine(text.substr(begin, place - begin));
  damage.excerpt = before + onePrintableLine(text.substr(place, end - place)) +
                   (end < text.size() && text[end] != '\n' ? "..." : "");
  damage.caret = width(before);
}

/// Tries the elements one by one.
void findElement(const JsonValue& root, const std::string& arrayName,
                 const std::function<void(const std::string&)>& deserialize, Damage& damage) {
  const JsonValue* const array =
      root.is_object() ? root.get_object().if_contains(arrayName) : nullptr;
  if (array == nullptr || !array->is_array()) {
    return;
  }
  std::size_t index = 0;
  for (const JsonValue& element : array->get_array()) {
    boost::json::object document;
    document[arrayName] = boost::json::array{element};
    try {
      deserialize(json::write(std::move(document)));
    } catch (const std::exception&) {
      const std::string text = json::write(element);
      damage.element = arrayName + "[" + std::to_string(index) + "]";
      damage.excerpt = onePrintableLine(std::string_view(text).substr(0, kElementBytes)) +
                       (text.size() > kElementBytes ? "..." : "");
      return;
    }
    ++index;
  }
}

}  // namespace

std::string Damage::describe() const {
  if (place) {
    return "line " + std::to_string(place->line) + ", column " + std::to_string(place->column) +
           ": " + reason;
  }
  return (element.empty() ? "" : element + ": ") + reason;
}

Damage locateDamage(const std::string& text, const std::string& message,
                    const std::string& arrayName,
                    const std::function<void(const std::string&)>& deserialize) {
  Damage damage;
  try {
    damage.reason = onePrintableLine(causeOf(message, text));
    findElement(json::parse(text), arrayName, deserialize, damage);
  } catch (const json::ParseError& error) {
    damage.reason = error.what();
    damage.place = placeOf(text, error.place());
    cutOut(text, damage);
  }
  return damage;
}

}  // namespace zentrel::vistabase::ardelivery::inspect
