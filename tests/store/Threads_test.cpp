// Eight threads call everything that stores have, closing them and opening the next included.
// ThreadSanitizer finds more than the expectations do.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <mutex>
#include <random>
#include <thread>

#include "store/FileStore.h"
#include "tests/cpp/TemporaryDirectory.h"
#include "tests/store/Samples.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;
using testing::AnyOf;

constexpr std::size_t kKeys = 5;
constexpr int kThreads = 8;
constexpr int kSteps = 2000;  // Per thread, or more if MODELCACHE_SECONDS have not passed.

struct Random : std::mt19937 {
  using std::mt19937::mt19937;
  int pick(int below) { return static_cast<int>((*this)() % static_cast<unsigned>(below)); }
  std::string key() { return std::to_string((*this)() % kKeys); }
};

/// What all threads share until one of them closes it.
struct Stores {
  explicit Stores(const TemporaryDirectory& root)
      : models(ModelStore::open(root / "models", kCapability, kTwoVersions)),
        files(FileStore::open(root / "files", 100)) {}

  const std::unique_ptr<ModelStore> models;
  const std::unique_ptr<FileStore> files;
  std::mutex mutex;
  std::pair<std::shared_ptr<Update>, int> update = {};  // The latest, and its version.
  std::array<std::atomic<int>, kKeys> fetching = {};    // Threads that fetch, by key.
};

void begin(Stores& stores, Random& random) {
  const int version = random.pick(5);
  const Room room = random.pick(2) == 0 ? Room::KeepActive : Room::GiveUpActive;
  std::pair update(std::shared_ptr(stores.models->begin(version, filesOf(version), room)), version);
  const std::lock_guard<std::mutex> lock(stores.mutex);
  stores.update.swap(update);
}

void advance(Stores& stores, Random& random) {
  stores.models->sizeBytes();
  std::unique_lock<std::mutex> lock(stores.mutex);
  const auto [update, version] = stores.update;
  lock.unlock();
  if (!update) {
    return;
  }
  const auto missing = update->missing();
  if (random.pick(20) == 0) {
    update->cancel();
    update->close();
  } else if (missing.empty()) {
    update->activate();
  } else {
    const ModelFile& file = missing[random() % missing.size()];
    const auto out = update->write(file);
    const std::string bytes = bytesOf(file.type(), version);
    update->remainingBytes();
    if (random.pick(3) == 0) {
      out->restart();
      out->write(bytes.data(), bytes.size() / 2);
    } else {
      put(*out, bytes);
    }
  }
}

/// Returns an empty text if the file does not exist.
std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The files that the latest snapshot names have the bytes of its version.
void readSnapshot(Stores& stores, Random&) {
  const auto snapshot = stores.models->snapshot();
  EXPECT_EQ(snapshot->active ? 4u : 0u, snapshot->paths.size());
  for (const auto& [type, path] : snapshot->paths) {
    const std::string bytes = readFile(path);
    EXPECT_TRUE(bytes == bytesOf(type, *snapshot->active) ||
                (bytes.empty() && stores.models->snapshot() != snapshot))
        << path;
  }
}

std::string contentOf(const std::string& key) {
  return std::string(30, key[0]);
}

void fetch(Stores& stores, Random& random) {
  const std::string key = random.key(), bytes = contentOf(key);
  std::atomic<int>& inside = stores.fetching[std::stoul(key)];
  const auto get = [&](EntryWriter& out) {
    EXPECT_EQ(1, ++inside) << "one thread at a time";
    const std::shared_ptr<void> leave(nullptr, [&](auto) { --inside; });
    put(out, bytes);
  };
  const std::string path = random.pick(2) == 0
                               ? stores.files->getOrFetch(key, 30, sha256(bytes), get)
                               : stores.files->getOrFetch(key, get);
  EXPECT_THAT(readFile(path), AnyOf(bytes, ""));
}

const BytesVector kExtra = {1, 2, 3};

using Step = void (*)(Stores&, Random&);
const Step kEachStep[] = {
    &advance,
    &readSnapshot,
    &fetch,
    &begin,
    [](auto& in, auto& random) {
      const std::vector<int> versions = in.models->snapshot()->versions;
      in.models->activate(versions.empty() ? 0 : versions[random() % versions.size()]);
    },
    [](auto& in, auto&) { in.models->deactivate(); },
    [](auto& in, auto& random) { in.models->files(random.pick(5)); },
    [](auto& in, auto& random) { in.models->trimExcept({random.pick(5)}); },
    [](auto& in, auto&) { EXPECT_TRUE(in.models->verify().empty()); },
    [](auto& in, auto& random) { in.models->setMaxSizeBytes(kVersionSize << random.pick(3)); },
    [](auto& in, auto& random) {
      const std::string key = random.key();
      put(*in.files->write(key), contentOf(key));
    },
    [](auto& in, auto& random) {
      const std::string key = random.key();
      EXPECT_THAT(readFile(in.files->get(key).value_or("")), AnyOf(contentOf(key), ""));
    },
    [](auto& in, auto& random) { in.files->remove(random.key()); },
    [](auto& in, auto& random) { in.files->setExtra(random.key(), kExtra); },
    [](auto& in, auto& random) {
      EXPECT_EQ(kExtra, in.files->extra(random.key()).value_or(kExtra));
    },
    [](auto& in, auto&) { EXPECT_LE(in.files->keys().size(), kKeys); },
    [](auto& in, auto&) { EXPECT_LE(in.files->size(), 150); },
    [](auto& in, auto& random) { in.files->setMaxSizeBytes(100 + random.pick(50)); },
    [](auto& in, auto&) { in.files->clear(); }};

TEST(Threads, shareStores) {
  const SoftErrors softErrors;
  const TemporaryDirectory root;
  const char* const seconds = std::getenv("MODELCACHE_SECONDS");
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::seconds(seconds == nullptr ? 0 : std::atoi(seconds));
  std::mutex mutex;
  auto current = std::make_shared<Stores>(root);
  std::atomic<int> done{0};
  const auto live = [&](unsigned seed) {
    Random random(seed);
    for (int i = 0; i < kSteps || std::chrono::steady_clock::now() < end; ++i) {
      std::unique_lock<std::mutex> lock(mutex);
      const auto stores = current;
      lock.unlock();
      try {
        if (random.pick(100) == 0) {
          stores->models->close();
          stores->files->close();
          for (const Step step : kEachStep) {
            EXPECT_THROW(step(*stores, random), UsageError);
          }
          lock.lock();
          current = current == stores ? std::make_shared<Stores>(root) : current;
        } else {
          const int commonest = 3, all = std::size(kEachStep);
          kEachStep[random.pick(random.pick(2) == 0 ? commonest : all)](*stores, random);
          ++done;
        }
      } catch (const std::logic_error&) {  // Closed or busy, or another thread was faster.
      } catch (const StoreError& error) {
        EXPECT_EQ(StoreError::Reason::NoRoom, error.reason()) << error.what();
      }
    }
  };
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kThreads; ++i) {
    threads.emplace_back(live, i);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_GT(done, kThreads * kSteps / 4);
  EXPECT_EQ(0, SoftErrors::count);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
