#pragma once

namespace zentrel::vistabase::ardelivery {

/// Call it in a catch block: raises the managed exception for a store's exception. Leaves any other
/// to the platform's translation.
void translateStoreException() noexcept;

}  // namespace zentrel::vistabase::ardelivery
