#pragma once

#include <dirent.h>

#include <cerrno>
#include <string_view>

namespace zentrel::vistabase::ardelivery {

/// Calls `take` with each remaining name in an open directory except "." and "..". Returns 0, or
/// the errno of a failure.
template <class Take>
int listNames(DIR* directory, const Take& take) {
  errno = 0;
  while (const dirent* const entry = ::readdir(directory)) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      take(name);
    }
    errno = 0;
  }
  return errno;
}

/// A std::unique_ptr deleter.
struct DirectoryCloser {
  void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};

}  // namespace zentrel::vistabase::ardelivery
