#include <cstdio>
#include <string>

#include "platform/softerror/softerror.h"

namespace softerror {
namespace {

/// A message may quote a whole file; a report stays one line all the same.
void appendOnOneLine(std::string& line, const char* text) {
  for (; *text != '\0'; ++text) {
    switch (*text) {
      case '\n':
        line += "\\n";
        break;
      case '\r':
        line += "\\r";
        break;
      default:
        line += *text;
    }
  }
}

}  // namespace

void platformSink(const Report& report) {
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
