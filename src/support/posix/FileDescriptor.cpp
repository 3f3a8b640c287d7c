#include "support/posix/FileDescriptor.h"

#include <unistd.h>

#include <utility>

#include "support/posix/retryOnInterrupt.h"

namespace zentrel::vistabase::ardelivery {

FileDescriptor::~FileDescriptor() {
  close();
}

bool FileDescriptor::close() noexcept {
  const int descriptor = std::exchange(descriptor_, -1);
  return descriptor >= 0 && retryOnInterrupt([descriptor] { return ::close(descriptor); }) == 0;
}

}  // namespace zentrel::vistabase::ardelivery
