#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

/// The file name of a key, relative to the root: each of " * / : < > ? | \ is preceded by a percent
/// sign and itself kept, so that a/b is the file b in the directory a%. Not idempotent.
std::string escapeKey(const std::string& key);

/// Whether a key must not name a file: it would be the root itself, be outside the root, be
/// truncated at a zero byte, or be one of the cache's own files.
bool isRefused(const std::string& key);

/// Like `escapeKey`, for a key from a caller. Throws std::runtime_error, with the key and the
/// reason, if the key is refused.
std::string fileNameOf(const std::string& key);

}  // namespace zentrel::vistabase::ardelivery
