#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zentrel::vistabase::ardelivery::inspect {

/// Whether the byte is not the first one of a UTF-8 character.
constexpr bool isContinuationByte(char byte) noexcept {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Columns that a printable text takes, at one per character.
std::size_t width(std::string_view text);

/// The text with \xNN for each byte of a control character or of no character: names are any bytes,
/// and a terminal obeys some of them.
std::string printable(std::string_view text);

/// As `printable`, with a point for each such byte.
std::string onePrintableLine(std::string_view text);

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
  enum class Align { Left, Right };

  explicit Table(std::vector<Align> columns) : columns_(std::move(columns)) {}

  /// A row of as many cells as there are columns.
  void add(std::vector<Cell> row) { rows_.push_back(std::move(row)); }

  /// The table's lines, each after `indent`, without trailing blanks.
  std::string text(const Painter& paint, const std::string& indent) const;

 private:
  std::vector<Align> columns_;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace zentrel::vistabase::ardelivery::inspect
