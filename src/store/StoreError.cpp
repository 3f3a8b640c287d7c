#include "store/StoreError.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace zentrel::vistabase::ardelivery {
namespace {

StoreError::Reason reasonOf(int error, bool isChange) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return StoreError::Reason::DiskFull;
    case EROFS:
      return StoreError::Reason::ReadOnly;
    case EACCES:
    case EPERM:
      return isChange ? StoreError::Reason::ReadOnly : StoreError::Reason::Io;
    default:
      return StoreError::Reason::Io;
  }
}

}  // namespace

StoreError::StoreError(Reason reason, const std::string& message, std::string path, int error,
                       std::optional<Room> room)
    : std::runtime_error(message),
      reason_(reason),
      path_(std::move(path)),
      error_(error),
      room_(room) {}

bool StoreError::isShortage() const noexcept {
  return error_ == EMFILE || error_ == ENFILE || error_ == ENOMEM;
}

StoreError StoreError::ofSystem(const char* action, const std::string& path, int error,
                                bool isChange) {
  // Not strerror, which need not be thread-safe.
  return {
      reasonOf(error, isChange),
      std::string("cannot ") + action + " " + path + ": " + std::generic_category().message(error),
      path, error};
}

}  // namespace zentrel::vistabase::ardelivery
