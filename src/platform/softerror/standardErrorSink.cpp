#include <cstdio>
#include <string>

#include "platform/softerror/softerror.h"

namespace softerror {
namespace {

/// The length in bytes of the control character that begins the text: 1 for ASCII, 2 for U+0080 to
/// U+009F in UTF-8, 0 for any other character.
int controlLength(const char* text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x20 || first == 0x7F) {
    return 1;
  }
  const auto second = static_cast<unsigned char>(text[1]);
  return first == 0xC2 && second >= 0x80 && second < 0xA0 ? 2 : 0;
}

void appendEscaped(std::string& line, char byte) {
  constexpr char digits[] = "0123456789abcdef";
  const auto value = static_cast<unsigned char>(byte);
  switch (byte) {
    case '\n':
      line += "\\n";
      break;
    case '\r':
      line += "\\r";
      break;
    default:
      line += {'\\', 'x', digits[value >> 4], digits[value & 0xF]};
  }
}

/// Escapes control characters: a message may quote a whole file or a hostile name, but a report
/// must stay one line of text.
void appendOnOneLine(std::string& line, const char* text) {
  while (*text != '\0') {
    int escaped = controlLength(text);
    if (escaped == 0) {
      line += *text++;
    }
    for (; escaped > 0; --escaped) {
      appendEscaped(line, *text++);
    }
  }
}

}  // namespace

void platformSink(const Report& report, void* /*userData*/) {
  std::string line = "soft error [";
  appendOnOneLine(line, report.category);
  line += ", severity " + std::to_string(static_cast<int>(report.severity)) + "]: ";
  appendOnOneLine(line, report.message);
  line += " (";
  appendOnOneLine(line, report.file);
  line += ":" + std::to_string(report.line) + ", ";
  appendOnOneLine(line, report.function);
  line += ")\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace softerror
