#pragma once

#include <cstdlib>
#include <iostream>
#include <random>

/// A new random seed, printed, or the one in the environment's MODELCACHE_SEED.
inline unsigned announcedSeed() {
  const char* const given = std::getenv("MODELCACHE_SEED");
  const unsigned seed = given == nullptr ? std::random_device()()
                                         : static_cast<unsigned>(std::strtoul(given, nullptr, 10));
  std::cout << "MODELCACHE_SEED=" << seed << std::endl;
  return seed;
}
