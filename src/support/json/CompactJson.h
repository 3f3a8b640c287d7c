#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Reads and writes compact JSON without building a tree. Every operation of the cache reads and
/// rewrites the metadata, and a tree, with several values per entry, would dominate its CPU time.
/// The caller handles punctuation and member names.
namespace zentrel::vistabase::ardelivery::json {

/// Appends arbitrary bytes as a string. Escapes what JSON requires, with the shortest escapes, and
/// nothing else.
void appendString(std::string& text, std::string_view value);

void appendInteger(std::string& text, std::int64_t value);

/// Reads what these functions wrote, unless a string needed an escape. Everything that it accepts,
/// `parse` accepts with the same result; what it rejects may still be valid.
class CompactReader {
 public:
  explicit CompactReader(std::string_view text) noexcept : rest_(text) {}

  /// Each advances past what it reads, or returns false if that is not next. After a failure the
  /// position is unspecified, except that `skip` does not move.
  bool skip(std::string_view punctuation) noexcept;
  bool readString(std::string_view& value) noexcept;
  bool readInteger(std::int64_t& value) noexcept;

  bool atEnd() const noexcept { return rest_.empty(); }

 private:
  std::string_view rest_;
};

}  // namespace zentrel::vistabase::ardelivery::json
