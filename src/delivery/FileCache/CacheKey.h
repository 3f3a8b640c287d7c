#pragma once

#include <string>

namespace zentrel::vistabase::ardelivery {

/// The name of a key's file below the root: each of " * / : < > ? | \ gets a percent sign before
/// it and is itself kept, so that a/b is the file b in the directory a%. Escaping twice escapes
/// twice.
std::string escapeKey(const std::string& key);

}  // namespace zentrel::vistabase::ardelivery
