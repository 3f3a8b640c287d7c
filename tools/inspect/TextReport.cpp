#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>

#include "delivery/FileCache/CacheKey.h"
#include "delivery/ModelCache/VersionedModelCacheImpl.h"
#include "tools/inspect/Terminal.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

using Kind = Table::Kind;

template <class Number>
std::string size(Number count) {
  auto bytes = static_cast<double>(count);
  const char* const units[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  std::size_t unit = 0;
  for (; std::abs(bytes) >= 1023.95 && unit + 1 < std::size(units); ++unit) {
    bytes /= 1024;
  }
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
  return text;
}

/// Of a recorded time, which may be anything.
std::string date(std::int64_t milliseconds) {
  const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
  std::tm parts{};
  char text[32];
  constexpr int lastYear = 9999 - 1900;
  const bool isDate =
      milliseconds > 0 && ::gmtime_r(&seconds, &parts) != nullptr && parts.tm_year <= lastYear;
  return isDate && std::strftime(text, sizeof text, "%Y-%m-%d %H:%MZ", &parts) != 0 ? text
         : milliseconds == 0                                                        ? "never"
                                                                                    : "no date";
}

std::string age(std::int64_t milliseconds) {
  const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
                       std::chrono::system_clock::now().time_since_epoch())
                       .count();
  if (milliseconds <= 0 || milliseconds > now) {
    return "";
  }
  const std::int64_t minutes = (now - milliseconds) / 60'000;
  constexpr std::int64_t day = 24 * 60;
  return minutes < 120       ? std::to_string(minutes) + " min"
         : minutes < 2 * day ? std::to_string(minutes / 60) + " h"
                             : std::to_string(minutes / day) + " d";
}

std::string files(std::uint64_t count) {
  return std::to_string(count) + (count == 1 ? " file" : " files");
}

class TextReport {
 public:
  TextReport(const Report& report, std::size_t width, bool coloured)
      : report_(report), width_(width), paint_(coloured) {}

  std::string text() {
    text_ = paint_(Colour::Bold, cut(printable(report_.root), width_)) + '\n';
    addFiles();
    addTotals();
    for (const Version& version : report_.versions) {
      addVersion(version);
    }
    addFindings();
    return text_;
  }

 private:
  void addLine(const std::string& line, std::size_t indent) {
    text_ += std::string(indent, ' ') + wrapped(line, width_ - indent, indent) + '\n';
  }

  void addFiles() {
    Table table({Kind::Name, Kind::Right, Kind::Left, Kind::Right, Kind::Left});
    table.add({{"NAME", Colour::Dim},
               {"SIZE", Colour::Dim},
               {"LAST USED", Colour::Dim},
               {"AGE", Colour::Dim},
               {"NOTE", Colour::Dim}});
    for (const auto* const list : {&report_.entries, &report_.others}) {
      for (const Entry& entry : *list) {
        const std::int64_t used = entry.lastAccess.value_or(0);
        table.add({{printable(entry.name)},
                   {size(entry.size())},
                   {date(used)},
                   {age(used)},
                   note(entry)});
      }
    }
    text_ += table.text(paint_, width_, "");
  }

  Cell note(const Entry& entry) const {
    if (entry.evicted) {
      // The cache escapes the name once more, and so looks for a file that is not there.
      return {escapeKey(entry.name) == entry.name ? "evicted " + std::to_string(*entry.evicted)
                                                  : "stays: its key has a special character"};
    }
    if (entry.state != "present") {
      return {entry.state, entry.state == "other" ? Colour::None : Colour::Yellow};
    }
    const bool isUnused = !report_.versions.empty() && entry.versions.empty() &&
                          entry.name != VersionedModelCacheImpl::kIndexKey;
    return {isUnused          ? "no version"
            : entry.extraSize ? "extra " + size(*entry.extraSize)
                              : "",
            Colour::Dim};
  }

  void addTotals() {
    Group all{"Total"};
    Table table({Kind::Left, Kind::Right, Kind::Right});
    for (const Group& group : report_.groups) {
      all.size += group.size;
      all.files += group.files;
    }
    for (const auto& group : report_.groups) {
      table.add({{"  " + group.name}, {size(group.size)}, {files(group.files)}});
    }
    text_ += '\n' + paint_(Colour::Bold, "Total " + size(all.size)) + " in " + files(all.files);
    text_ += table.text(paint_, width_, "");
    std::string line = "The cache counts " + size(report_.totalSize);
    if (const auto& budget = report_.budget) {
      const double left = static_cast<double>(*budget) - static_cast<double>(report_.totalSize);
      line += " of a budget of " + size(*budget) + ": " + size(std::abs(left)) +
              (left < 0 ? " over" : " left");
    }
    addLine(line, 0);
  }

  void addVersion(const Version& version) {
    std::string heading = "Version " + std::to_string(version.version) +
                          (version.active ? ", active, " : ", ") + size(version.size);
    for (const Capability& capability : version.capabilities) {
      heading +=
          ", " + capability.name + (capability.missing.empty() ? " complete" : " not complete");
    }
    text_ += '\n' + paint_(Colour::Bold, wrapped(heading, width_, 2));
    Table table({Kind::Name, Kind::Name, Kind::Right, Kind::Left});
    for (const Model& model : version.models) {
      table.add({{printable(model.type)},
                 {printable(model.cacheKey)},
                 model.size ? Cell{size(*model.size)} : Cell{"missing", Colour::Red},
                 {model.shared ? "shared" : "", Colour::Dim}});
    }
    text_ += table.text(paint_, width_, "  ");
    text_ += version.models.empty() ? "\n" : "";
  }

  void addFindings() {
    if (report_.verifiedFiles) {
      text_ += '\n';
      addLine(files(*report_.verifiedFiles) + " verified", 0);
    }
    if (report_.findings.empty()) {
      text_ += '\n' + paint_(Colour::Green, "No findings") + '\n';
      return;
    }
    text_ += '\n' + paint_(Colour::Bold, "Findings") + '\n';
    for (const Finding& finding : report_.findings) {
      const std::string name = cut(printable(finding.name), width_ / 2);
      text_ += "  " + paint_(Colour::Yellow, "!") + ' ' +
               wrapped(name + (name.empty() ? "" : " ") + finding.text, width_ - 4, 4) + '\n';
    }
    if (report_.metadata.damage && report_.metadata.readable) {
      addLine("Every operation of the cache fails until metadata.json is set aside: --recover", 0);
    }
  }

  const Report& report_;
  const std::size_t width_;
  const Painter paint_;
  std::string text_;
};

}  // namespace

std::string toText(const Report& report, std::size_t width, bool coloured) {
  return TextReport(report, width, coloured).text();
}

}  // namespace zentrel::vistabase::ardelivery::inspect
