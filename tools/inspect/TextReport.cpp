#include "tools/inspect/TextReport.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "delivery/FileCache/CacheKey.h"
#include "tools/inspect/Terminal.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

using Align = Table::Align;

class TextReport {
 public:
  TextReport(const Report& report, const TextOptions& options)
      : report_(report), exactBytes_(options.exactBytes), paint_(options.colours) {}

  std::string text() {
    text_ = paint_(Colour::Bold, printable(report_.root)) + '\n';
    addDamage("metadata.json", report_.metadata);
    addEntries();
    addTotal();
    addEvictions();
    addDamage("versioned_index", report_.index);
    addVersions();
    addFindings();
    return text_;
  }

 private:
  void addHeading(const std::string& heading) {
    text_ += '\n' + paint_(Colour::Bold, heading) + '\n';
  }

  void addDamage(const std::string& name, const OwnFile& file) {
    if (!file.damage) {
      return;
    }
    const Damage& damage = *file.damage;
    text_ += '\n' + paint_(Colour::Red, name + " is damaged") + ": " + damage.describe() + '\n';
    if (!damage.excerpt.empty()) {
      text_ += "    " + damage.excerpt + '\n';
    }
    if (damage.place) {
      text_ += "    " + std::string(damage.caret, ' ') + paint_(Colour::Red, "^") + '\n';
    }
  }

  void addEntries() {
    text_ += '\n';
    if (report_.entries.empty()) {
      text_ += "No entries\n";
      return;
    }
    Table table({Align::Left, Align::Right, Align::Left, Align::Right, Align::Left});
    table.add({{"ENTRY", Colour::Dim},
               {"SIZE", Colour::Dim},
               {"LAST ACCESS", Colour::Dim},
               {"EXTRA", Colour::Dim},
               {"STATE", Colour::Dim}});
    for (const Entry& entry : report_.entries) {
      table.add({{printable(entry.name)},
                 {size(entry.size())},
                 {lastAccess(entry)},
                 {entry.extraSize ? size(static_cast<std::int64_t>(*entry.extraSize)) : "-"},
                 state(entry)});
    }
    text_ += table.text(paint_, "");
  }

  void addTotal() {
    addHeading("Total " + size(report_.totalSize));
    if (!report_.budget) {
      return;
    }
    const std::int64_t budget = *report_.budget;
    const bool isOver = report_.totalSize > budget;
    const std::int64_t apart = isOver ? report_.totalSize - budget : budget - report_.totalSize;
    text_ +=
        "  of a budget of " + size(budget) + ": " +
        paint_(isOver ? Colour::Red : Colour::Green, size(apart) + (isOver ? " over" : " left")) +
        '\n';
  }

  void addEvictions() {
    if (report_.evictedNext.empty()) {
      return;
    }
    text_ += "  the next commit evicts, in this order:\n";
    Table table({Align::Right, Align::Left, Align::Right, Align::Left, Align::Left});
    int number = 0;
    for (const std::string& name : report_.evictedNext) {
      const auto entry = std::find_if(report_.entries.begin(), report_.entries.end(),
                                      [&name](const Entry& other) { return other.name == name; });
      // The cache escapes the name once more, and so looks for a file that is not there.
      const bool isFound = escapeKey(name) == name;
      table.add({{std::to_string(++number)},
                 {printable(name)},
                 {size(entry->size())},
                 {lastAccess(*entry)},
                 {isFound ? "" : "stays: its key has a special character", Colour::Dim}});
    }
    text_ += table.text(paint_, "    ");
  }

  void addVersions() {
    for (const Version& version : report_.versions) {
      std::string heading = "Version " + std::to_string(version.number);
      for (const Capability& capability : version.capabilities) {
        heading += std::string(", ") + capability.name +
                   (capability.missing.empty() ? " complete" : " not complete");
      }
      addHeading(heading);
      Table table({Align::Left, Align::Left, Align::Left});
      for (const Model& model : version.models) {
        table.add({{printable(model.type)},
                   {printable(model.cacheKey)},
                   model.present ? Cell{"present", Colour::Green} : Cell{"missing", Colour::Red}});
      }
      text_ += table.text(paint_, "  ");
    }
  }

  void addFindings() {
    if (report_.findings.empty()) {
      text_ += '\n' + paint_(Colour::Green, "No findings") + '\n';
      return;
    }
    addHeading("Findings");
    for (const std::string& finding : report_.findings) {
      text_ += "  " + paint_(Colour::Yellow, "!") + ' ' + finding + '\n';
    }
    if (report_.metadata.damage) {
      text_ += "\nEvery operation of the cache fails until metadata.json is set aside: --recover\n";
    }
  }

  static std::string lastAccess(const Entry& entry) {
    return entry.lastAccess.value_or(0) == 0 ? "never" : toDate(*entry.lastAccess, false);
  }

  static Cell state(const Entry& entry) {
    if (!entry.onDisk) {
      return {entry.state(), Colour::Red};
    }
    return {entry.state(), entry.recordedSize ? Colour::Green : Colour::Yellow};
  }

  std::string size(std::int64_t bytes) const {
    constexpr double step = 1024;
    const char* const units[] = {"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    if (exactBytes_ || std::llabs(bytes) < 1024) {
      return std::to_string(bytes) + (exactBytes_ ? "" : " B");
    }
    double number = static_cast<double>(bytes) / step;
    std::size_t unit = 0;
    while (std::abs(number) >= step - 0.05 && unit + 1 < std::size(units)) {
      number /= step;
      ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.1f %s", number, units[unit]);
    return text;
  }

  const Report& report_;
  const bool exactBytes_;
  const Painter paint_;
  std::string text_;
};

}  // namespace

std::string toText(const Report& report, const TextOptions& options) {
  return TextReport(report, options).text();
}

}  // namespace zentrel::vistabase::ardelivery::inspect
