#pragma once

#include <dirent.h>

#include <cerrno>
#include <string_view>

namespace zentrel::vistabase::ardelivery {

/// Calls `take` with each name in the rest of an open directory, without "." and "..". Returns 0,
/// or the errno that ended it.
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

/// For the owner of an open directory.
struct DirectoryCloser {
  void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};

}  // namespace zentrel::vistabase::ardelivery
