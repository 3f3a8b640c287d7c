#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>

#include "delivery/FileCache/CacheKey.h"
#include "delivery/FileNames.h"
#include "support/util/joined.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

/// Rows of cells, each column as wide as its widest cell.
class Table {
 public:
  /// A letter for each column: n for names, which are cut where a line would be too long, r for
  /// those that are aligned at their right, l for others.
  explicit Table(std::string columns) : columns_(std::move(columns)) {}

  /// A row of as many printable texts as there are columns.
  void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

  /// The table's lines, without trailing blanks.
  std::string text(std::size_t width, const std::string& indent) const {
    const std::vector<std::size_t> widths = fittedTo(width - indent.size());
    std::string result;
    for (const auto& row : rows_) {
      std::string line = indent;
      for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string cell = cut(row[i], widths[i]);
        const std::string padding(widths[i] - columns(cell), ' ');
        line += (columns_[i] == 'r' ? padding + cell : cell + padding) + "  ";
      }
      line.erase(line.find_last_not_of(' ') + 1);
      result += line + '\n';
    }
    return result;
  }

 private:
  std::vector<std::size_t> fittedTo(std::size_t total) const {
    std::vector<std::size_t> widths(columns_.size());
    std::size_t sum = 2 * (widths.size() - 1);
    for (std::size_t i = 0; i < widths.size(); ++i) {
      for (const auto& row : rows_) {
        widths[i] = std::max(widths[i], columns(row[i]));
      }
      sum += widths[i];
    }
    std::size_t widest = 0;
    for (; sum > total && widths[widest] > 0; --sum, --widths[widest]) {
      for (std::size_t i = 0; i < widths.size(); ++i) {
        widest = columns_[i] == 'n' && widths[i] > widths[widest] ? i : widest;
      }
    }
    return widths;
  }

  std::string columns_;
  std::vector<std::vector<std::string>> rows_;
};

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
  char text[32] = "no date";
  if (milliseconds > 0 && ::gmtime_r(&seconds, &parts) != nullptr && parts.tm_year < 8100) {
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%MZ", &parts);
  }
  return milliseconds == 0 ? "never" : text;
}

/// Whole lines of at most `width` columns, broken at blanks and indented but for the first.
std::string wrapped(const std::string& text, std::size_t width, std::size_t indent) {
  std::string result;
  std::size_t taken = 0;
  for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
    end = std::min(text.find(' ', begin), text.size());
    const std::string word = cut(text.substr(begin, end - begin), width - std::min(width, indent));
    const bool isNewLine = taken > indent && taken + 1 + columns(word) > width;
    const std::string space = isNewLine ? std::string(indent, ' ') : begin > 0 ? " " : "";
    result.append(isNewLine ? "\n" : "").append(space).append(word);
    taken = (isNewLine ? 0 : taken) + space.size() + columns(word);
  }
  return result + '\n';
}

class TextReport {
 public:
  TextReport(const Report& report, std::size_t width) : report_(report), width_(width) {}

  std::string text() {
    text_ = cut(printable(report_.root), width_) + '\n' +
            wrapped("Holds " + printable(report_.holds), width_, 2);
    if (report_.holder) {
      text_ += wrapped("A store is open in " + printable(*report_.holder), width_, 2);
    }
    text_ += '\n';
    addNames();
    addTotals();
    for (const Version& version : report_.versions) {
      addVersion(version);
    }
    addFindings();
    return text_;
  }

 private:
  void addNames() {
    const bool isWide = width_ >= 80;  // Else the names need the room of the dates.
    Table table("nrll");
    table.add({"NAME", "SIZE", isWide ? "LAST USED" : "", "NOTE"});
    for (const auto* const list : {&report_.entries, &report_.others}) {
      for (const Entry& entry : *list) {
        const std::string used = isWide ? date(entry.lastAccess.value_or(0)) : "";
        table.add({printable(entry.name), size(entry.size()), used, note(entry)});
      }
    }
    text_ += table.text(width_, "");
  }

  std::string note(const Entry& entry) const {
    if (entry.evicted) {
      // The cache escapes the name once more, and so looks for a file that is not there.
      const bool isFound = report_.isStore() || escapeKey(entry.name) == entry.name;
      return isFound ? "evicted " + std::to_string(*entry.evicted) : "stays";
    }
    const bool isModel = !report_.versions.empty() && entry.name != kIndexName;
    return entry.state != "present"            ? entry.state
           : entry.versions.size() > 1         ? "shared"
           : isModel && entry.versions.empty() ? "no version"
           : entry.extraSize                   ? "extra " + size(*entry.extraSize)
                                               : "";
  }

  void addTotals() {
    std::string line = "\nTotal " + size(report_.size) + ", of which " + size(report_.totalSize) +
                       " count for the budget";
    if (const auto& budget = report_.budget) {
      const double left = static_cast<double>(*budget) - static_cast<double>(report_.totalSize);
      line += " of " + size(*budget) + ": " + size(std::abs(left)) + (left < 0 ? " over" : " left");
    }
    text_ += wrapped(line, width_, 2);
    if (report_.budget && report_.isStore()) {
      line = joined("An update of ", size(report_.begin), " would delete ",
                    std::count_if(report_.entries.begin(), report_.entries.end(),
                                  [](const Entry& each) { return each.evicted; }),
                    " files");
      for (const std::int32_t version : report_.evictedVersions) {
        line += joined(", version ", version);
      }
      text_ += wrapped(line, width_, 2);
    }
  }

  void addVersion(const Version& version) {
    std::string heading = "\nVersion " + std::to_string(version.version) +
                          (version.active ? ", active, " : ", ") + size(version.size);
    for (const auto& [name, missing] : version.capabilities) {
      heading += ", " + name + (missing.empty() ? "" : " not") + " complete";
    }
    Table table("nnr");
    for (const Model& model : version.models) {
      table.add({printable(model.type), printable(model.cacheKey),
                 model.size ? size(*model.size) : "missing"});
    }
    text_ += wrapped(heading, width_, 2) + table.text(width_, "  ");
  }

  void addFindings() {
    text_ += report_.verifiedFiles ? joined("\n", *report_.verifiedFiles, " files verified\n") : "";
    text_ += report_.findings.empty() ? "\nNo findings\n" : "\nFindings\n";
    for (const Finding& finding : report_.findings) {
      const std::string name = cut(printable(finding.name), std::max<std::size_t>(width_ / 2, 34));
      text_ += "  ! " + wrapped(name + (name.empty() ? "" : " ") + finding.text, width_ - 4, 4);
    }
    if (beginsWith(report_.metadata, "is damaged")) {
      text_ += wrapped(
          "Every operation of the cache fails until --recover sets metadata.json aside", width_, 0);
    }
  }

  const Report& report_;
  const std::size_t width_;
  std::string text_;
};

}  // namespace

std::string toText(const Report& report, std::size_t width) {
  return TextReport(report, width).text();
}

}  // namespace zentrel::vistabase::ardelivery::inspect
