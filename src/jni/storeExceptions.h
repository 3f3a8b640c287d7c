#pragma once

namespace zentrel::vistabase::ardelivery {

/// Inside a catch block: raises the managed exception for what a store threw, which the platform's
/// own translation does not know. Anything else is left to that.
void translateStoreException() noexcept;

}  // namespace zentrel::vistabase::ardelivery
