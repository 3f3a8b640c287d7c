// loadTime LIBRARY: prints how many microseconds it takes to load a library with all it needs.

#include <dlfcn.h>

#include <chrono>
#include <iostream>

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  const auto start = std::chrono::steady_clock::now();
  void* const library = ::dlopen(argv[1], RTLD_NOW);
  const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
  if (library == nullptr) {
    std::cerr << ::dlerror() << '\n';
    return 1;
  }
  std::cout << time.count() << '\n';
}
