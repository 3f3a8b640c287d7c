#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "benchmarks/Fixture.h"
#include "delivery/FileCache/IFileCache.h"

namespace zentrel::vistabase::ardelivery::bench {

/// One operation of the file cache with its floor: the same system calls on the same files in the
/// same order, and nothing else.
struct Operation {
  std::string name;
  std::size_t deletes;  ///< How many entries it deletes; they have to be restored each time.
  void (*run)(IFileCache& cache, const Fixture& fixture);
  void (*floor)(const Fixture& fixture);

  bool fits(std::size_t entries) const { return deletes == kAll || deletes < entries; }
  void restore(const Fixture& fixture) const;

  static constexpr std::size_t kAll = static_cast<std::size_t>(-1);
};

/// All of IFileCache's, in its order.
const std::vector<Operation>& operations();

/// The floor of getCacheEntry, of which the versioned cache's queries are made up.
void promotingLookUp(const Fixture& fixture, std::size_t index);

}  // namespace zentrel::vistabase::ardelivery::bench
