#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace zentrel::vistabase::ardelivery::inspect {

/// A place in a text.
struct TextPlace {
  std::size_t byte;    ///< From 0.
  std::size_t line;    ///< From 1.
  std::size_t column;  ///< From 1, in bytes.
};

/// What is wrong with one of the cache's own files, and where.
struct Damage {
  std::string reason;
  std::optional<TextPlace> place;  ///< Of a text that is no JSON document.
  std::string element;             ///< Of a document of another shape: "entries[3]", or "".
  std::string excerpt;             ///< The text around the place, in one printable line.
  std::size_t caret = 0;           ///< Columns of the excerpt before the place.

  /// The place and the reason, in one line.
  std::string describe() const;
};

/// Finds the place for which `deserialize`, one of the library's own, refuses the text. `message`
/// is what it threw; `arrayName` is the root's member that holds the records.
Damage locateDamage(const std::string& text, const std::string& message,
                    const std::string& arrayName,
                    const std::function<void(const std::string&)>& deserialize);

}  // namespace zentrel::vistabase::ardelivery::inspect
