#pragma once

#include <cerrno>

namespace zentrel::vistabase::ardelivery {

/// Makes a system call again for as long as a signal interrupts it.
template <class Call>
auto retryOnInterrupt(const Call& call) -> decltype(call()) {
  for (;;) {
    const auto result = call();
    if (result != -1 || errno != EINTR) {
      return result;
    }
  }
}

}  // namespace zentrel::vistabase::ardelivery
