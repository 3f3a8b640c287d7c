#include <unistd.h>

#include <algorithm>
#include <boost/algorithm/hex.hpp>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <cwchar>
#include <numeric>

#include "delivery/FileCache/CacheKey.h"
#include "support/util/Utf.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

/// Whether a terminal obeys the character, or shows others in another order because of it.
bool isObeyed(char32_t character) {
  constexpr std::pair<char32_t, char32_t> ranges[] = {
      {0, 0x1F},        {0x7F, 0x9F},     {0x61C, 0x61C},  {0x200E, 0x200F},
      {0x2028, 0x202E}, {0x2066, 0x2069}, {0xD800, 0xDFFF}};
  return std::any_of(std::begin(ranges), std::end(ranges), [character](const auto& range) {
    return character >= range.first && character <= range.second;
  });
}

/// The end of the character at `begin`, and the columns that it takes.
std::size_t next(std::string_view text, std::size_t begin, std::size_t& width) {
  const char32_t character = decodeUtf8(text, begin).value_or(U'?');
  width = static_cast<std::size_t>(std::max(::wcwidth(static_cast<wchar_t>(character)), 0));
  return begin;
}

/// A printable text with its middle cut out, so that it takes at most `width` columns.
std::string cut(const std::string& text, std::size_t width) {
  const std::size_t whole = columns(text);
  if (whole <= width) {
    return text;
  }
  const std::size_t kept = width - std::min<std::size_t>(width, 3);
  std::string left;
  std::string right = "...";
  std::size_t before = 0;  // Columns.
  for (std::size_t begin = 0, end = 0, wide = 0; begin < text.size(); begin = end, before += wide) {
    end = next(text, begin, wide);
    if (before + wide <= (kept + 1) / 2) {
      left += text.substr(begin, end - begin);
    } else if (whole - before <= kept / 2) {
      right += text.substr(begin, end - begin);
    }
  }
  return left + right;
}

/// Rows of cells, each column as wide as its widest cell.
class Table {
 public:
  /// A letter for each column: n for names, which are cut where a line would be too long, l for
  /// others, r for those that are aligned at their right.
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
    for (const auto& row : rows_) {
      for (std::size_t i = 0; i < row.size(); ++i) {
        widths[i] = std::max(widths[i], columns(row[i]));
      }
    }
    std::size_t sum = std::accumulate(widths.begin(), widths.end(), 2 * (widths.size() - 1));
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
  constexpr std::int64_t end = 253'402'300'800'000;  // of the year 9999
  const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
  std::tm parts{};
  char text[32] = "no date";
  if (milliseconds > 0 && milliseconds < end && ::gmtime_r(&seconds, &parts) != nullptr) {
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%MZ", &parts);
  }
  return milliseconds == 0 ? "never" : text;
}

std::string age(std::int64_t milliseconds) {
  const std::int64_t minutes = (std::time(nullptr) - milliseconds / 1000) / 60;
  if (milliseconds <= 0 || minutes < 0) {
    return "";
  }
  return minutes < 120    ? std::to_string(minutes) + " min"
         : minutes < 2880 ? std::to_string(minutes / 60) + " h"
                          : std::to_string(minutes / 1440) + " d";
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

std::string files(std::uint64_t count) {
  return std::to_string(count) + (count == 1 ? " file" : " files");
}

class TextReport {
 public:
  TextReport(const Report& report, std::size_t width) : report_(report), width_(width) {}

  std::string text() {
    text_ = cut(printable(report_.root), width_) + "\n\n";
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
    Table table("nrlrl");
    table.add({"NAME", "SIZE", "LAST USED", "AGE", "NOTE"});
    for (const auto* const list : {&report_.entries, &report_.others}) {
      for (const Entry& entry : *list) {
        const std::int64_t used = entry.lastAccess.value_or(0);
        table.add({printable(entry.name), size(entry.size()), date(used), age(used), note(entry)});
      }
    }
    text_ += table.text(width_, "");
  }

  std::string note(const Entry& entry) const {
    if (entry.evicted) {
      // The cache escapes the name once more, and so looks for a file that is not there.
      return escapeKey(entry.name) == entry.name ? "evicted " + std::to_string(*entry.evicted)
                                                 : "stays";
    }
    const bool isModel = !report_.versions.empty() && entry.name != "versioned_index";
    return entry.state != "present"            ? entry.state
           : entry.versions.size() > 1         ? "shared"
           : isModel && entry.versions.empty() ? "no version"
           : entry.extraSize                   ? "extra " + size(*entry.extraSize)
                                               : "";
  }

  void addTotals() {
    Group all{"Total"};
    Table table("lrr");
    for (const Group& group : report_.groups) {
      all.size += group.size;
      all.files += group.files;
      table.add({group.name, size(group.size), files(group.files)});
    }
    text_ += "\nTotal " + size(all.size) + " in " + files(all.files) + '\n';
    text_ += table.text(width_, "  ");
    std::string line = "The cache counts " + size(report_.totalSize);
    if (const auto& budget = report_.budget) {
      const double left = static_cast<double>(*budget) - static_cast<double>(report_.totalSize);
      line += " of a budget of " + size(*budget) + ": " + size(std::abs(left)) +
              (left < 0 ? " over" : " left");
    }
    text_ += wrapped(line, width_, 2);
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
    text_ += report_.verifiedFiles ? '\n' + files(*report_.verifiedFiles) + " verified\n" : "";
    text_ += report_.findings.empty() ? "\nNo findings\n" : "\nFindings\n";
    for (const Finding& finding : report_.findings) {
      const std::string name = cut(printable(finding.name), width_ / 2);
      text_ += "  ! " + wrapped(name + (name.empty() ? "" : " ") + finding.text, width_ - 4, 4);
    }
    if (report_.metadata != "missing" && report_.metadata != "present" &&
        report_.metadata != "cannot be read" && ::access(report_.root.c_str(), W_OK) == 0) {
      text_ += wrapped(
          "Every operation of the cache fails until --recover sets metadata.json aside", width_, 0);
    }
  }

  const Report& report_;
  const std::size_t width_;
  std::string text_;
};

}  // namespace

std::string toUtf8(std::string_view bytes,
                   const std::function<std::string(std::string_view)>& replace) {
  std::string text;
  for (std::size_t begin = 0, end = 0; begin < bytes.size(); begin = end) {
    const auto character = decodeUtf8(bytes, end);
    const std::string_view run = bytes.substr(begin, end - begin);
    text += character && !isObeyed(*character) ? std::string(run) : replace(run);
  }
  return text;
}

std::string printable(std::string_view bytes) {
  return toUtf8(bytes, [](std::string_view run) {
    std::string text;
    for (const char byte : run) {
      text += "\\x" + boost::algorithm::hex_lower(std::string(1, byte));
    }
    return text;
  });
}

std::size_t columns(std::string_view text) {
  std::size_t sum = 0;
  for (std::size_t at = 0, width = 0; at < text.size(); sum += width) {
    at = next(text, at, width);
  }
  return sum;
}

std::string toText(const Report& report, std::size_t width) {
  return TextReport(report, width).text();
}

}  // namespace zentrel::vistabase::ardelivery::inspect
