#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

/// The name of a key's file below the root: each of " * / : < > ? | \ gets a percent sign before
/// it and is itself kept, so that a/b is the file b in the directory a%. Escaping twice escapes
/// twice.
std::string escapeKey(const std::string& key);

/// Whether a key is not for a file: it would be the root itself, lie outside it, have its name cut
/// short at a zero byte, or be one of the cache's own.
bool isRefused(const std::string& key);

/// As `escapeKey`, for a key that a caller gives. Throws std::runtime_error, which quotes the key
/// and says why, when it is refused.
std::string fileNameOf(const std::string& key);

}  // namespace zentrel::vistabase::ardelivery
