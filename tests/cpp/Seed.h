#pragma once

#include <cstdlib>
#include <random>

/// The random seed in the environment's MODELCACHE_SEED, or a new one. Failures are to tell it.
inline unsigned givenOrNewSeed() {
  const char* const given = std::getenv("MODELCACHE_SEED");
  return given == nullptr ? std::random_device()()
                          : static_cast<unsigned>(std::strtoul(given, nullptr, 10));
}
