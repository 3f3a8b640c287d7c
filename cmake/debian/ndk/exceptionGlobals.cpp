// A thread's exception state, in place of that of Debian's C++ runtime, which is thread_local.
#include <pthread.h>
#include <stdlib.h>

extern "C" void* __cxa_get_globals() {
  static const pthread_key_t key = [] {
    pthread_key_t created;
    return ::pthread_key_create(&created, &::free) == 0 ? created : (::abort(), created);
  }();
  void* globals = ::pthread_getspecific(key);
  if (globals == nullptr) {
    globals = ::calloc(3, sizeof(void*));
    ::pthread_setspecific(key, globals);
  }
  return globals;
}

extern "C" void* __cxa_get_globals_fast() {
  return __cxa_get_globals();
}
