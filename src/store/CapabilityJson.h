#pragma once

#include "store/Capability.h"
#include "support/json/JsonValue.h"

namespace zentrel::vistabase::ardelivery {

/// Adds the members "capability" and "types".
void addCapability(boost::json::object& members, const Capability& capability);

/// Reads the capability from those members. Throws json::Error.
Capability capabilityOf(const JsonValue& document);

}  // namespace zentrel::vistabase::ardelivery
