#pragma once

#include <string>

#include "tools/inspect/Report.h"

namespace zentrel::vistabase::ardelivery::inspect {

struct TextOptions {
  bool colours;
  bool exactBytes;  ///< Sizes in bytes, instead of KiB and so on.
};

/// The report for a human, in columns.
std::string toText(const Report& report, const TextOptions& options);

}  // namespace zentrel::vistabase::ardelivery::inspect
