#pragma once

#include <string>
#include <unordered_map>

namespace zentrel::vistabase::ardelivery {

/// The cached files of one version: from model type to path.
using ModelEntries = std::unordered_map<int, std::string>;

}  // namespace zentrel::vistabase::ardelivery
