#pragma once

#include <string>

#include "tools/inspect/Report.h"

namespace zentrel::vistabase::ardelivery::inspect {

/// The report for a script: one line of JSON. Sizes are in bytes, times in milliseconds since the
/// epoch; what is not known is null.
std::string toJson(const Report& report);

}  // namespace zentrel::vistabase::ardelivery::inspect
