#include "benchmarks/Operations.h"

#include <algorithm>

#include "benchmarks/SystemCalls.h"

namespace zentrel::vistabase::ardelivery::bench {
namespace {

/// The key that is looked up and committed: neither among the oldest nor new.
const std::string& keyIn(const Fixture& fixture) {
  return fixture.keys.back();
}

void load(const Fixture& fixture) {
  calls::status(fixture.metadataFile);
  calls::readFile(fixture.metadataFile);
  calls::listDirectory(fixture.root);
}

/// Saves the metadata without as many of its records.
void save(const Fixture& fixture, std::size_t gone = 0) {
  calls::status(fixture.root);
  calls::writeFile(fixture.metadataFile, fixture.metadata,
                   fixture.metadata.size() - gone * fixture.recordLength);
}

void removeEntry(const Fixture& fixture, std::size_t index) {
  calls::status(fixture.paths[index]);
  calls::remove(fixture.paths[index]);
  calls::status(fixture.extraDirectory);
  calls::remove(fixture.extraPaths[index]);
}

void loadAndSave(const Fixture& fixture) {
  load(fixture);
  save(fixture);
}

/// Commits so many bytes that exactly as many entries have to go.
template <std::size_t Evictions>
void commitSize(IFileCache& cache, const Fixture& fixture) {
  constexpr auto evicted = static_cast<std::int64_t>(Evictions);
  cache.commit(keyIn(fixture), Fixture::kEntryBytes * (1 + evicted));
}

template <std::size_t Evictions>
void commitSizeFloor(const Fixture& fixture) {
  load(fixture);
  for (std::size_t i = 0; i < Evictions; ++i) {
    load(fixture);
    if (i > 0) {
      save(fixture, i);  // The reload found that the entry evicted before is gone.
    }
    removeEntry(fixture, i);
  }
  save(fixture, Evictions);
}

}  // namespace

void Operation::restore(const Fixture& fixture) const {
  fixture.restore(std::min(deletes, fixture.keys.size()));
}

void promotingLookUp(const Fixture& fixture, std::size_t index) {
  load(fixture);
  calls::status(fixture.paths[index]);
  save(fixture);
}

const std::vector<Operation>& operations() {
  using Cache = IFileCache;
  static const std::vector<Operation> all{
      {"insertAndLock", 0, [](Cache& cache, const Fixture& f) { cache.insertAndLock(f.newKey); },
       [](const Fixture& f) {
         load(f);
         calls::status(f.root);
         calls::status(f.extraDirectory);
         calls::removeMissing(f.newExtraPath);
       }},
      {"commit", 0, [](Cache& cache, const Fixture& f) { cache.commit(keyIn(f)); },
       [](const Fixture& f) {
         calls::status(f.paths.back());
         calls::size(f.paths.back());
         loadAndSave(f);
       }},
      {"commit with size", 0, commitSize<0>, commitSizeFloor<0>},
      {"commit, 1 eviction", 1, commitSize<1>, commitSizeFloor<1>},
      {"commit, 10 evictions", 10, commitSize<10>, commitSizeFloor<10>},
      {"unlock", 0, [](Cache& cache, const Fixture& f) { cache.unlock(keyIn(f)); }, loadAndSave},
      {"getCacheEntry", 0, [](Cache& cache, const Fixture& f) { cache.getCacheEntry(keyIn(f)); },
       [](const Fixture& f) { promotingLookUp(f, f.paths.size() - 1); }},
      {"getCacheEntryWithoutPromotion", 0,
       [](Cache& cache, const Fixture& f) { cache.getCacheEntryWithoutPromotion(keyIn(f)); },
       [](const Fixture& f) { calls::status(f.paths.back()); }},
      {"updateExtra", 0,
       [](Cache& cache, const Fixture& f) { cache.updateExtra(keyIn(f), BytesVector(16, 'e')); },
       [](const Fixture& f) {
         load(f);
         calls::status(f.extraDirectory);
         calls::writeFile(f.extraPaths.back(), f.metadata, 16);
       }},
      {"getAllMetas", 0, [](Cache& cache, const Fixture&) { cache.getAllMetas(); },
       [](const Fixture& f) {
         load(f);
         calls::status(f.extraDirectory);
         for (const std::string& path : f.listedExtraPaths) {
           calls::status(path);
           calls::readFile(path);
         }
       }},
      {"memContains", 0, [](Cache& cache, const Fixture& f) { cache.memContains(keyIn(f)); }, load},
      {"remove", 1, [](Cache& cache, const Fixture& f) { cache.remove(f.keys[0]); },
       [](const Fixture& f) {
         load(f);
         removeEntry(f, 0);
         save(f, 1);
       }},
      {"getSize", 0, [](Cache& cache, const Fixture&) { cache.getSize(); }, load},
      {"clear", Operation::kAll, [](Cache& cache, const Fixture&) { cache.clear(); },
       [](const Fixture& f) {
         load(f);
         calls::removeAll(f.root);
       }},
      {"flushExtra", 0, [](Cache& cache, const Fixture&) { cache.flushExtra(); },
       [](const Fixture&) {}},
  };
  return all;
}

}  // namespace zentrel::vistabase::ardelivery::bench
