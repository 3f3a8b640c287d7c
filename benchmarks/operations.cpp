// operations FOLDER [FLAGS OF GOOGLE BENCHMARK]: how long each operation and its floor take, on
// roots that are made below FOLDER. The names of the benchmarks are OPERATION/SIDE/ENTRIES.
//
// operations FOLDER --count ENTRIES, under callgrind with --combine-dumps=yes: dumps what TIMES
// steps of each cost as "OPERATION/SIDE/ENTRIES/TIMES".

#include <benchmark/benchmark.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "benchmarks/Fixture.h"
#include "benchmarks/SystemCalls.h"
#include "delivery/FileCache/createFileCache.h"
#include "delivery/ModelCache/FacetrackerModelCache.h"

namespace zentrel::vistabase::ardelivery::bench {
namespace {

using Step = std::function<void()>;

using MakeStep = std::function<Step(const Fixture&)>;

/// One operation with its floor: the same system calls on the same files in the same order, and
/// nothing else. Both are steps that can be taken on a restored fixture.
struct Operation {
  std::string name;
  bool deletes;  ///< Whether the fixture has to be restored after each step.
  std::map<std::string, MakeStep> sides;
};

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

void promote(const Fixture& fixture, const std::string& path) {
  load(fixture);
  calls::status(path);
  calls::clock();
  save(fixture);
}

/// Each of the four getters looks up all models of the version.
void promoteModels(const Fixture& fixture) {
  for (std::size_t getter = 0; getter < fixture.modelPaths.size(); ++getter) {
    for (const std::string& path : fixture.modelPaths) {
      promote(fixture, path);
    }
  }
}

/// A row of the table. `run` takes a cache, which is made once for all its steps.
template <class Cache>
Operation row(const char* name, bool deletes, void (*run)(Cache&, const Fixture&),
              void (*floor)(const Fixture&)) {
  const auto cacheStep = [run](const Fixture& fixture) -> Step {
    std::shared_ptr<Cache> cache;
    if constexpr (std::is_same_v<Cache, IFileCache>) {
      cache = createFileCache(fixture.root, fixture.budget);
    } else {
      cache = std::make_shared<Cache>(createFileCache(fixture.root, fixture.budget));
    }
    return [run, &fixture, cache] { run(*cache, fixture); };
  };
  const auto floorStep = [floor](const Fixture& fixture) -> Step {
    return [floor, &fixture] { floor(fixture); };
  };
  return {name, deletes, {{"cache", cacheStep}, {"floor", floorStep}}};
}

void fourPathGetters(FacetrackerModelCache& models, const Fixture& fixture) {
  for (const auto& model : FacetrackerModelCache::kModels) {
    const auto paths = models.getModelPaths(Fixture::kVersion);
    if (((*paths).*model.path).size() <= fixture.root.size()) {
      throw std::logic_error("The version has no path below " + fixture.root);
    }
  }
}

/// IFileCache's, in its order, less what is made of the same steps as another one; and a model
/// cache's, whose index has been read.
std::vector<Operation> makeOperations() {
  using Cache = IFileCache;
  using Models = FacetrackerModelCache;
  using F = const Fixture&;
  return {
      row<Cache>(
          "insertAndLock", false, [](Cache& c, F f) { c.insertAndLock(f.newKey); },
          [](F f) {
            load(f);
            calls::clock();
            calls::status(f.root);
            calls::status(f.extraDirectory);
            calls::linkStatus(f.newExtraPath);
          }),
      row<Cache>(
          "commit", false, [](Cache& c, F f) { c.commit(keyIn(f)); },
          [](F f) {
            calls::status(f.paths.back());
            calls::statusAt(f.paths.back(), 0, STATX_TYPE | STATX_SIZE);
            loadAndSave(f);
          }),
      row<Cache>(
          "commit, 1 eviction", true,
          [](Cache& c, F f) { c.commit(keyIn(f), 2 * Fixture::kEntryBytes); },
          [](F f) {
            load(f);
            load(f);
            removeEntry(f, 0);
            save(f, 1);
          }),
      row<Cache>(
          "getCacheEntry", false, [](Cache& c, F f) { c.getCacheEntry(keyIn(f)); },
          [](F f) { promote(f, f.paths.back()); }),
      row<Cache>(
          "getCacheEntryWithoutPromotion", false,
          [](Cache& c, F f) { c.getCacheEntryWithoutPromotion(keyIn(f)); },
          [](F f) { calls::status(f.paths.back()); }),
      row<Cache>(
          "getAllMetas", false, [](Cache& c, F) { c.getAllMetas(); },
          [](F f) {
            load(f);
            calls::status(f.extraDirectory);
            for (const std::string& path : f.extraPaths) {
              calls::status(path);
              calls::readFile(path);
            }
          }),
      row<Cache>(
          "memContains", false, [](Cache& c, F f) { c.memContains(keyIn(f)); },
          [](F f) {
            load(f);
            calls::clock();
          }),
      row<Cache>(
          "remove", true, [](Cache& c, F f) { c.remove(f.keys[0]); },
          [](F f) {
            load(f);
            removeEntry(f, 0);
            save(f, 1);
          }),
      row<Models>("four path getters", false, fourPathGetters, promoteModels),
  };
}

constexpr std::size_t kEntries[] = {6, 32, 100, 1000};
constexpr int kCountedSteps = 20;

/// Of roots with that number of entries; made when first used.
const Fixture& fixtureOf(const std::string& folder, std::size_t entries) {
  static std::map<std::size_t, Fixture> fixtures;
  return fixtures.try_emplace(entries, folder + "/root" + std::to_string(entries), entries)
      .first->second;
}

template <class Visitor>
void visit(std::size_t entries, const Visitor& visitor) {
  static const std::vector<Operation> operations = makeOperations();
  for (const Operation& operation : operations) {
    for (const auto& [side, make] : operation.sides) {
      visitor(operation.name + "/" + side + "/" + std::to_string(entries), operation.deletes, make);
    }
  }
}

/// Of repetitions: what else the machine does only adds to the time.
double least(const std::vector<double>& times) {
  return *std::min_element(times.begin(), times.end());
}

double secondsOf(const Step& step) {
  const auto start = std::chrono::steady_clock::now();
  step();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void measure(benchmark::State& state, const Fixture& fixture, bool deletes, const MakeStep& make) {
  fixture.restore();
  const Step step = make(fixture);
  step();
  if (!deletes) {
    for (auto iteration : state) {
      step();
    }
    return;
  }
  fixture.restore();
  for (auto iteration : state) {
    state.SetIterationTime(secondsOf(step));
    fixture.restore();
  }
}

void registerAll(const std::string& folder) {
  for (const std::size_t entries : kEntries) {
    visit(entries, [&](const std::string& name, bool deletes, const MakeStep& make) {
      const auto run = [=, &make](benchmark::State& state) {
        measure(state, fixtureOf(folder, entries), deletes, make);
      };
      auto* const added = benchmark::RegisterBenchmark(name.c_str(), run);
      added->ComputeStatistics("least", least);
      if (!deletes) {
        added->UseRealTime();
      } else {  // What is restored in between takes longer than the step, and is not counted.
        added->UseManualTime()->Iterations(10);
      }
    });
  }
}

void count(const std::string& folder, std::size_t entries) {
  const Fixture& fixture = fixtureOf(folder, entries);
  visit(entries, [&](const std::string& name, bool deletes, const MakeStep& make) {
    const int times = deletes ? 1 : kCountedSteps;
    const std::string dump = name + "/" + std::to_string(times);
    fixture.restore();
    const Step step = make(fixture);
    step();  // What happens only once, such as the binding of symbols, is not counted.
    fixture.restore();
    CALLGRIND_DUMP_STATS_AT("");  // Zeroing forgets to zero the system calls.
    for (int i = 0; i < times; ++i) {
      step();
    }
    CALLGRIND_DUMP_STATS_AT(dump.c_str());
  });
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery::bench

int main(int argc, char** argv) {
  using namespace zentrel::vistabase::ardelivery::bench;
  if (argc < 2) {
    return 2;
  }
  if (argc == 4 && argv[2] == std::string("--count")) {
    count(argv[1], std::stoul(argv[3]));
    return 0;
  }
  registerAll(argv[1]);
  benchmark::Initialize(&--argc, argv + 1);
  benchmark::RunSpecifiedBenchmarks();
}
