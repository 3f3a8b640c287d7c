// coldStart ROOT [CALLS]: asks for the four face-tracking paths, or makes so many look-ups, and
// prints the peak memory of the process in KiB. Without arguments it does nothing, as a baseline.

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <limits>
#include <string>

#include "delivery/FileCache/createFileCache.h"
#include "delivery/ModelCache/FacetrackerModelCache.h"

using namespace zentrel::vistabase::ardelivery;

namespace {

constexpr int kVersion = 7;

/// Not getrusage, which also counts the process that this one was made from.
std::string peakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") {
      status >> word;
      return word;
    }
  }
  return "0";
}

bool hasFourPaths(const std::shared_ptr<IFileCache>& cache) {
  FacetrackerModelCache models(cache);
  for (const auto path :
       {&FacetrackerModelPaths::faceAlignPath, &FacetrackerModelPaths::faceDetectPath,
        &FacetrackerModelPaths::faceContourPath, &FacetrackerModelPaths::meshPath}) {
    const auto paths = models.getModelPaths(kVersion);
    if (!paths || ((*paths).*path).empty()) {
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) {
    const auto cache = createFileCache(argv[1], std::numeric_limits<std::int64_t>::max());
    if (!hasFourPaths(cache)) {
      std::cerr << "There are no four paths below " << argv[1] << '\n';
      return 1;
    }
    for (int calls = argc > 2 ? std::atoi(argv[2]) : 0; calls > 0; --calls) {
      cache->getAllMetas();
      cache->getCacheEntry("face_tracker_model_0000");
    }
  }
  std::cout << peakMemory() << '\n';
}
