#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/json/JsonValue.h"

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
  std::string element = {};             ///< Of a document: "entries[3]", or "".
  std::optional<TextPlace> place = {};  ///< Of a text that is no JSON document.
  std::string excerpt = {};             ///< The text around the place, in one printable line.
  std::size_t caret = 0;                ///< Columns of the excerpt before the place.

  /// The place and the reason, in one line.
  std::string describe() const;
};

/// What the library says of the text of a file.
Damage damageOf(const json::Error& error, std::string_view text);

/// One of the files in which the cache keeps its own affairs.
struct OwnFile {
  bool present = false;
  std::optional<Damage> damage;
};

/// An entry, by the name of its file.
struct Entry {
  std::string name;
  std::optional<std::int64_t> recordedSize;  ///< Bytes; none without a record.
  std::optional<std::int64_t> lastAccess;    ///< Milliseconds since the epoch; none as above.
  bool onDisk = false;
  std::optional<std::uint64_t> sizeOnDisk;  ///< Bytes; none too when it cannot be measured.
  std::optional<std::uint64_t> extraSize;   ///< Bytes of the extra file, where there is one.

  /// As the cache would count it.
  std::int64_t size() const;
  /// "present", "only recorded" or "only on disk".
  const char* state() const;
};

/// A model of a version, as the index names it.
struct Model {
  std::string type;
  std::string cacheKey;
  bool present;  ///< Whether the file cache would find its file.
};

/// How far a version has a capability's files.
struct Capability {
  const char* name;
  std::vector<std::string> missing;  ///< Names of the types without a file; empty when complete.
};

struct Version {
  std::int32_t number;
  std::vector<Model> models;
  std::vector<Capability> capabilities;  ///< Those that the version has any model of.
};

/// What lies under a root.
struct Report {
  std::string root;
  OwnFile metadata;
  OwnFile index;
  std::vector<Entry> entries;  ///< By name.
  std::int64_t totalSize = 0;  ///< Bytes, as the cache's next operation would count them.
  std::optional<std::int64_t> budget;
  std::vector<std::string> evictedNext;  ///< Names; what the next commit would evict, in order.
  std::vector<Version> versions;         ///< In the order of the index.
  std::vector<std::string> findings;     ///< What is not in order, one line each.
};

/// Milliseconds since the epoch as a date; the number itself where no calendar has it.
std::string toDate(std::int64_t milliseconds, bool utc);

}  // namespace zentrel::vistabase::ardelivery::inspect
