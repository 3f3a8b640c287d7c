#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

/// Stands, while it lives, between this program and its system calls on files, to which the linker
/// leads them (--wrap).
class SystemCalls {
 public:
  SystemCalls() { current = this; }
  ~SystemCalls() { current = nullptr; }

  /// Called first: the errno with which "open", "read", "write", "close" or "readdir" is to fail,
  /// or 0.
  std::function<int(std::string_view call)> errorOf = [](auto) { return 0; };
  std::size_t mostBytes = static_cast<std::size_t>(-1);  ///< That one read or write moves.
  int openFlags = 0;                                     ///< Of the last "open".
  int openFiles = 0;                                     ///< Opened less closed.

  static inline SystemCalls* current = nullptr;
};
