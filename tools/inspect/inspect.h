#pragma once

#include <boost/filesystem/path.hpp>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "tools/inspect/Report.h"

namespace zentrel::vistabase::ardelivery::inspect {

/// Looks at a cache's root, without changing anything. Throws std::exception, with a text for the
/// user, when the root is no folder, cannot be read, or does not look like a cache. The last is
/// given up when `force` is set: a root whose own files were lost is still a cache.
Report inspect(const std::string& root, std::optional<std::int64_t> budget, bool force);

/// Sets a damaged metadata file aside, as the managed recoverMetadata does, and returns its new
/// path; nothing happens, and the result is empty, when there is none or it is not damaged. Throws
/// as `inspect`.
std::string recover(const std::string& root, bool force);

/// Reads one of the cache's own files through `deserialize`; the json::Error that it throws becomes
/// the file's damage.
OwnFile readOwnFile(const boost::filesystem::path& root, const std::string& name,
                    const std::function<void(const std::string&)>& deserialize);

/// Adds what the stored index says to the report.
void inspectIndex(const boost::filesystem::path& root, Report& report);

}  // namespace zentrel::vistabase::ardelivery::inspect
