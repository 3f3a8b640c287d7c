// latency TMPFS DISK [FLAGS OF GOOGLE BENCHMARK]: how long each operation takes, below a folder in
// memory and one on a disk. The names of the benchmarks are OPERATION/SIDE/PLACE/ENTRIES.

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <string>

#include "benchmarks/Fixture.h"
#include "benchmarks/Operations.h"
#include "benchmarks/SqliteCache.h"
#include "delivery/FileCache/createFileCache.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"
#include "delivery/ModelCache/FacetrackerModelCache.h"
#include "delivery/Storage/FileIO.h"

namespace zentrel::vistabase::ardelivery::bench {
namespace {

constexpr std::size_t kEntries[] = {6, 32, 100, 1000};
constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();

/// Where the benchmarks of one place and one entry count run. Made when first used.
class Site {
 public:
  Site(std::string folder, std::size_t entries) : folder_(std::move(folder)), entries_(entries) {}

  const Fixture& fixture() { return make(fixture_, "cache"); }

  /// The entries of which one is the index of the versioned cache.
  const Fixture& versioned() {
    if (!versioned_) {
      make(versioned_, "versioned", 1).addVersion();
      versioned_->metadata = FileIO().readFile(versioned_->metadataFile);
    }
    return *versioned_;
  }

  const Fixture& peer(const std::string& name) { return make(peers_[name], name); }

 private:
  const Fixture& make(std::unique_ptr<Fixture>& fixture, const std::string& name,
                      std::size_t fewer = 0) {
    if (!fixture) {
      fixture = std::make_unique<Fixture>(folder_ + "/" + name + std::to_string(entries_),
                                          entries_ - fewer);
    }
    return *fixture;
  }

  const std::string folder_;
  const std::size_t entries_;
  std::unique_ptr<Fixture> fixture_;
  std::unique_ptr<Fixture> versioned_;
  std::map<std::string, std::unique_ptr<Fixture>> peers_;
};

using Step = std::function<void()>;

double secondsOf(const Step& step) {
  const auto start = std::chrono::steady_clock::now();
  step();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Registers a benchmark of what `prepare` makes, which can be repeated as it is.
void repeated(const std::string& name, std::function<Step()> prepare) {
  auto* const added =
      benchmark::RegisterBenchmark(name.c_str(), [prepare](benchmark::State& state) {
        const Step run = prepare();
        run();
        for (auto iteration : state) {
          run();
        }
      });
  added->UseRealTime();
}

/// Registers a benchmark whose runs take care of their set-up and give the seconds to count.
void timed(const std::string& name, std::function<std::function<double()>()> prepare,
           int iterations = 10) {
  auto* const added =
      benchmark::RegisterBenchmark(name.c_str(), [prepare](benchmark::State& state) {
        const auto run = prepare();
        for (auto iteration : state) {
          state.SetIterationTime(run());
        }
      });
  added->UseManualTime()->Iterations(iterations);
}

/// `make` gives the step to measure on a restored fixture.
void addSide(const std::string& name, const Operation& operation, Site& site,
             std::function<Step(const Fixture&)> make) {
  if (operation.deletes == 0) {
    return repeated(name, [=, &site] {
      site.fixture().restore();
      return make(site.fixture());
    });
  }
  const auto prepare = [=, &site, &operation]() -> std::function<double()> {
    const Fixture& fixture = site.fixture();
    fixture.restore();
    return [step = make(fixture), &operation, &fixture] {
      const double seconds = secondsOf(step);
      operation.restore(fixture);
      return seconds;
    };
  };
  timed(name, prepare, operation.deletes == Operation::kAll ? 1 : 10);
}

void addOperation(const Operation& operation, const std::string& place, Site& site) {
  addSide(operation.name + "/cache" + place, operation, site, [&operation](const Fixture& fixture) {
    return [&operation, &fixture, cache = createFileCache(fixture.root, fixture.budget)] {
      operation.run(*cache, fixture);
    };
  });
  addSide(operation.name + "/floor" + place, operation, site, [&operation](const Fixture& fixture) {
    return [&operation, &fixture] { operation.floor(fixture); };
  });
}

/// The versioned cache over an index that has been read already.
void addVersioned(const std::string& place, Site& site) {
  const auto floor = [&site](int queries) {
    return [&site, queries] {
      return [&fixture = site.versioned(), queries] {
        for (int i = 0; i < 4 * queries; ++i) {
          promotingLookUp(fixture, static_cast<std::size_t>(i % 4));
        }
      };
    };
  };
  repeated("queryEntries/floor" + place, floor(1));
  repeated("four path getters/floor" + place, floor(4));
  repeated("queryEntries/cache" + place, [&site] {
    const ModelTypeNames types{{0, "face_tracker_model.bin"},
                               {1, "face_detector_model.bin"},
                               {2, "features_model.bin"},
                               {3, "pdm_multires.bin"}};
    auto cache = std::make_shared<VersionedModelCacheImpl>(
        std::make_unique<FileIO>(), std::make_unique<CacheDescriptorSerializer>(),
        createFileCache(site.versioned().root, kNoLimit),
        std::make_shared<CapabilityModelTypeSerializer>(types));
    return [cache] { cache->queryEntries(Fixture::kVersion); };
  });
  repeated("four path getters/cache" + place, [&site] {
    auto models =
        std::make_shared<FacetrackerModelCache>(createFileCache(site.versioned().root, kNoLimit));
    return [models] {
      for (const auto path :
           {&FacetrackerModelPaths::faceAlignPath, &FacetrackerModelPaths::faceDetectPath,
            &FacetrackerModelPaths::faceContourPath, &FacetrackerModelPaths::meshPath}) {
        std::string result = (*models->getModelPaths(Fixture::kVersion)).*path;
        benchmark::DoNotOptimize(result);
      }
    };
  });
}

/// What the peer comparison asks of either cache; `insert` gets a new file in, over the budget.
struct Contract {
  std::function<void(const std::string&)> get;
  std::function<double(const Fixture&)> insert;
  std::function<void(const std::string&)> remove;
  std::function<void(const Fixture&)> restore;
};

Contract fileCacheContract(const Fixture& fixture) {
  const auto cache = createFileCache(fixture.root, fixture.budget);
  return {[cache](const std::string& key) { cache->getCacheEntry(key); },
          [cache](const Fixture& f) {
            const double before = secondsOf([&] { cache->insertAndLock(f.newKey); });
            f.writeEntry(f.newPath);
            return before + secondsOf([&] {
                     cache->getCacheEntry(f.newKey);  // Else it would be the one to be evicted.
                     cache->commit(f.newKey);
                     cache->unlock(f.newKey);
                   });
          },
          [cache](const std::string& key) { cache->remove(key); },
          [](const Fixture& f) { f.restore(1); }};
}

Contract sqliteContract(const Fixture& fixture, const std::string& synchronous) {
  for (const char* const suffix : {"", "-wal", "-shm"}) {
    std::remove((fixture.root + "/.index.sqlite" + suffix).c_str());
  }
  const auto cache = std::make_shared<SqliteCache>(fixture.root, fixture.budget, synchronous);
  cache->adopt(fixture.keys, Fixture::kEntryBytes);
  return {[cache](const std::string& key) { cache->get(key); },
          [cache](const Fixture& f) {
            f.writeEntry(f.newPath);
            return secondsOf([&] { cache->commit(f.newKey); });
          },
          [cache](const std::string& key) { cache->remove(key); },
          [cache](const Fixture& f) {
            cache->remove(f.newKey);
            f.restore(1);
            cache->adopt({f.keys[0]}, Fixture::kEntryBytes);
          }};
}

void addPeer(const std::string& side, const std::string& place, Site& site,
             std::function<Contract(const Fixture&)> make) {
  const auto fixture = [&site, side]() -> const Fixture& {
    const Fixture& made = site.peer(side);
    made.restore();
    return made;
  };
  repeated("get and promote" + side + place, [=] {
    const Fixture& f = fixture();
    return [&f, contract = make(f)] { contract.get(f.keys.back()); };
  });
  timed("insert and commit" + side + place, [=] {
    const Fixture& f = fixture();
    return [&f, contract = make(f)] {
      const double seconds = contract.insert(f);
      contract.restore(f);
      return seconds;
    };
  });
  timed("remove one" + side + place, [=] {
    const Fixture& f = fixture();
    return [&f, contract = make(f)] {
      const double seconds = secondsOf([&] { contract.remove(f.keys[0]); });
      contract.restore(f);
      return seconds;
    };
  });
}

void addAll(const std::string& placeName, const std::string& folder,
            std::vector<std::unique_ptr<Site>>& sites) {
  for (const std::size_t entries : kEntries) {
    sites.push_back(std::make_unique<Site>(folder, entries));
    Site& site = *sites.back();
    const std::string place = "/" + placeName + "/" + std::to_string(entries);
    for (const Operation& operation : operations()) {
      if (operation.fits(entries)) {
        addOperation(operation, place, site);
      }
    }
    addVersioned(place, site);
    addPeer("/file cache", place, site, fileCacheContract);
    for (const std::string synchronous : {"OFF", "NORMAL"}) {
      addPeer("/SQLite " + synchronous, place, site, [synchronous](const Fixture& fixture) {
        return sqliteContract(fixture, synchronous);
      });
    }
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery::bench

int main(int argc, char** argv) {
  using namespace zentrel::vistabase::ardelivery::bench;
  if (argc < 3) {
    return 2;
  }
  std::vector<std::unique_ptr<Site>> sites;
  addAll("tmpfs", argv[1], sites);
  addAll("disk", argv[2], sites);
  argc -= 2;
  benchmark::Initialize(&argc, argv + 2);
  benchmark::RunSpecifiedBenchmarks();
}
