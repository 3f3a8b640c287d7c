#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zentrel::vistabase::ardelivery::inspect {

/// The width of lines that are not to be fitted to anything.
constexpr std::size_t kUnlimited = static_cast<std::size_t>(-1);

/// The bytes as UTF-8, with what `replace` gives for each run of bytes that is no character, or is
/// one that a terminal obeys if `isForTerminal`: a control character, or one that turns text
/// around.
std::string toUtf8(std::string_view bytes, bool isForTerminal,
                   const std::function<std::string(std::string_view run)>& replace);

/// The bytes for a terminal: \xNN for each that is no part of a harmless character.
std::string printable(std::string_view bytes);

/// Columns that a printable text takes.
std::size_t columns(std::string_view text);

/// A printable text with its middle cut out, if need be, so that it takes at most `width` columns.
std::string cut(const std::string& text, std::size_t width);

/// A printable text as lines of `width` columns, broken at blanks; the second and later ones are
/// indented by `indent`.
std::string wrapped(const std::string& text, std::size_t width, std::size_t indent);

enum class Colour { None, Bold, Dim, Red, Green, Yellow };

/// Colours texts, or does not.
class Painter {
 public:
  explicit Painter(bool enabled) noexcept : enabled_(enabled) {}

  std::string operator()(Colour colour, const std::string& text) const;

 private:
  bool enabled_;
};

struct Cell {
  std::string text;
  Colour colour = Colour::None;
};

/// Rows of cells, each column as wide as its widest cell.
class Table {
 public:
  enum class Kind { Left, Right, Name };  ///< Names are cut where a line would be too long.

  explicit Table(std::vector<Kind> columns) : columns_(std::move(columns)) {}

  /// A row of as many cells as there are columns.
  void add(std::vector<Cell> row) { rows_.push_back(std::move(row)); }

  /// The table's lines after a blank one, or nothing without rows. No line has trailing blanks.
  std::string text(const Painter& paint, std::size_t width, const std::string& indent) const;

 private:
  std::vector<std::size_t> widths(std::size_t total) const;

  std::vector<Kind> columns_;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace zentrel::vistabase::ardelivery::inspect
