#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Compact JSON text without a tree of values in between. The metadata is read and written again by
/// each operation of the cache, and a tree would be most of what an operation computes: several
/// values for each entry. The punctuation and the names of members are the caller's.
namespace zentrel::vistabase::ardelivery::json {

/// Appends any bytes as a string: what JSON wants escaped is escaped, as short as it can be, and
/// all else is kept.
void appendString(std::string& text, std::string_view value);

void appendInteger(std::string& text, std::int64_t value);

/// Reads what has been written by these functions, as far as no string needed an escape. What it
/// accepts, `parse` accepts with the same result; it is no judge of the rest.
class CompactReader {
 public:
  explicit CompactReader(std::string_view text) noexcept : rest_(text) {}

  /// Each moves past what it read, and returns whether that was there. After a failure the place is
  /// undefined, except for `skip`, which stays.
  bool skip(std::string_view punctuation) noexcept;
  bool readString(std::string_view& value) noexcept;
  bool readInteger(std::int64_t& value) noexcept;

  bool atEnd() const noexcept { return rest_.empty(); }

 private:
  std::string_view rest_;
};

}  // namespace zentrel::vistabase::ardelivery::json
