#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace zentrel::vistabase::ardelivery {

/// The longest name of a key's file, in characters: what stands before it in the names of files
/// that go with it has to fit, too.
constexpr std::size_t kLongestKeyName = 244;

/// The name of a key's file in a FileStore: letters, digits and each of "-_." stand for themselves,
/// every other UTF-16 unit of the key is a percent sign and four hexadecimal digits, so that no key
/// means anything to a file system. Throws std::invalid_argument if the key is no UTF-8 or its name
/// is empty or too long. A lone surrogate may stand there in three bytes.
std::string nameOfKey(const std::string& key);

/// The key of such a name. None for a name that no key has.
std::optional<std::string> keyOfName(const std::string& name);

}  // namespace zentrel::vistabase::ardelivery
