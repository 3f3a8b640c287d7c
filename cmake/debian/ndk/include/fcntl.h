// Warns, as the NDK's does under _FORTIFY_SOURCE, about a mode where nothing can be created.
#pragma once
#include_next <fcntl.h>
#ifdef __cplusplus

#define WARNS_OF_USELESS_MODE                                                                   \
  __attribute__((diagnose_if(mode != 0 && (flags & O_CREAT) == 0 && (flags & __O_TMPFILE) == 0, \
                             "superfluous mode bits", "warning")))

inline int open(const char* path, int flags, mode_t mode) WARNS_OF_USELESS_MODE {
  int (*const real)(const char*, int, ...) = open;
  return real(path, flags, mode);
}

inline int openat(int folder, const char* path, int flags, mode_t mode) WARNS_OF_USELESS_MODE {
  int (*const real)(int, const char*, int, ...) = openat;
  return real(folder, path, flags, mode);
}

#undef WARNS_OF_USELESS_MODE
#endif
