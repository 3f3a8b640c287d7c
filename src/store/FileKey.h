#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace zentrel::vistabase::ardelivery {

/// The longest file name of a key, in characters. Leaves room for the prefixes of related files.
constexpr std::size_t kLongestKeyName = 244;

/// The file name of a key in a FileStore. Letters, digits, "-", "_" and "." are unchanged; every
/// other UTF-16 unit becomes a percent sign and four hexadecimal digits, so that no key is special
/// to a file system. Throws std::invalid_argument if the key is not UTF-8, or if its name is empty
/// or too long. A lone surrogate, encoded in three bytes, is accepted.
std::string nameOfKey(const std::string& key);

/// The key of such a name, or nullopt if no key has it.
std::optional<std::string> keyOfName(const std::string& name);

}  // namespace zentrel::vistabase::ardelivery
