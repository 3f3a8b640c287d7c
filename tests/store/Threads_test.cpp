// Eight threads do with one store whatever they like, closing it and opening the next included.
// Most of it is for ThreadSanitizer to watch.

#include <gtest/gtest.h>

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

constexpr std::size_t kKeys = 5;

struct Random : std::mt19937 {
  using std::mt19937::mt19937;
  int pick(int below) { return static_cast<int>((*this)() % static_cast<unsigned>(below)); }
  std::string key() { return std::to_string((*this)() % kKeys); }
};

constexpr int kThreads = 8;
constexpr int kSteps = 1000;  // Of each, or more for as long as MODELCACHE_SECONDS says.

/// Empty if there is no such file any more.
std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

template <class Stage>
using Step = std::function<void(Stage&, Random&)>;

/// Has all threads take random steps on the stage, which has a store. Nothing may go wrong but that
/// the store is closed or busy, that another thread was faster, or that there is no room.
template <class Stage>
void storm(const std::function<void(Stage&)>& openStore, const std::vector<Step<Stage>>& steps) {
  const SoftErrors softErrors;
  const char* const seconds = std::getenv("MODELCACHE_SECONDS");
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::seconds(seconds == nullptr ? 0 : std::atoi(seconds));
  const auto open = [&] {
    const auto stage = std::make_shared<Stage>();
    openStore(*stage);
    return stage;
  };
  std::mutex mutex;
  std::shared_ptr<Stage> current = open();
  std::atomic<int> done{0};
  const auto live = [&](unsigned seed) {
    Random random(seed);
    for (int i = 0; i < kSteps || std::chrono::steady_clock::now() < end; ++i) {
      std::unique_lock<std::mutex> lock(mutex);
      const std::shared_ptr<Stage> stage = current;
      lock.unlock();
      try {
        if (random.pick(100) == 0) {
          stage->store->close();
          for (const auto& step : steps) {
            EXPECT_THROW(step(*stage, random), UsageError);
          }
          lock.lock();
          current = current == stage ? open() : current;
        } else {
          steps[random() % steps.size()](*stage, random);
          ++done;
        }
      } catch (const UsageError&) {
      } catch (const std::invalid_argument&) {
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

struct Models {
  std::unique_ptr<ModelStore> store;
  std::mutex mutex;
  std::shared_ptr<Update> update;  // Which all threads work on.
  int version = 0;
};

void begin(Models& models, Random& random) {
  const int version = random.pick(5);
  const Room room = random.pick(2) == 0 ? Room::KeepActive : Room::GiveUpActive;
  std::shared_ptr<Update> update = models.store->begin(version, filesOf(version), room);
  const std::lock_guard<std::mutex> lock(models.mutex);
  models.update.swap(update);
  models.version = version;
}

void help(Models& models, Random& random) {
  models.store->sizeBytes();
  std::unique_lock<std::mutex> lock(models.mutex);
  const auto [update, version] = std::pair(models.update, models.version);
  lock.unlock();
  const auto missing = update ? update->missing() : std::vector<ModelFile>();
  if (random.pick(20) == 0 && update) {
    update->cancel();
    update->close();
  } else if (missing.empty() && update) {
    update->activate();
  } else if (update) {
    const ModelFile& file = missing[random() % missing.size()];
    const std::string bytes = bytesOf(file.type(), version);
    const auto out = update->write(file);
    if (out->offset() != 0 && random.pick(2) == 0) {
      out->restart();
    }
    for (auto at = static_cast<std::size_t>(out->offset()); at < bytes.size(); at += 25) {
      out->write(bytes.data() + at, 25);
      update->remainingBytes();
    }
    out->commit();
  }
}

/// What a snapshot names has the bytes of its version for as long as it is the latest.
void look(Models& models, Random&) {
  const auto snapshot = models.store->snapshot();
  EXPECT_EQ(snapshot->active ? 4u : 0u, snapshot->paths.size());
  for (const auto& [type, path] : snapshot->paths) {
    const std::string bytes = readFile(path);
    EXPECT_TRUE(bytes == bytesOf(type, *snapshot->active) ||
                (bytes.empty() && models.store->snapshot() != snapshot))
        << path;
  }
}

TEST(Threads, shareAModelStore) {
  const TemporaryDirectory root;
  storm<Models>(
      [&](auto& models) {
        models.store = ModelStore::open(root.path(), kCapability, kTwoVersions);
      },
      {&begin, &help, &help, &help, &look, &look,
       [](auto& models, auto& random) {
         const std::vector<int> versions = models.store->snapshot()->versions;
         models.store->activate(versions.empty() ? 0 : versions[random() % versions.size()]);
       },
       [](auto& models, auto&) { models.store->deactivate(); },
       [](auto& models, auto& random) { models.store->files(random.pick(5)); },
       [](auto& models, auto& random) { models.store->trimExcept({random.pick(5)}); },
       [](auto& models, auto&) { EXPECT_TRUE(models.store->verify().empty()); },
       [](auto& models, auto& random) {
         models.store->setMaxSizeBytes(kVersionSize << random.pick(3));
       }});
}

struct Files {
  std::unique_ptr<FileStore> store;
  std::array<std::atomic<int>, kKeys> fetching = {};  // Threads inside, by key.
};

std::string contentOf(const std::string& key, std::size_t size) {
  return key + std::string(size, '.') + '!';
}

/// Whether it is all of some content of the key, or gone.
bool isWhole(const std::string& key, const std::string& text) {
  return text.empty() ||
         (text.size() > key.size() && text == contentOf(key, text.size() - key.size() - 1));
}

void writeInPieces(EntryWriter& out, const std::string& bytes) {
  const std::size_t half = bytes.size() / 2;
  const auto at = static_cast<std::size_t>(out.offset());
  out.write(bytes.data() + at, std::max(at, half) - at);
  out.write(bytes.data() + std::max(at, half), bytes.size() - std::max(at, half));
}

void fetch(Files& files, Random& random) {
  const std::string key = random.key(), bytes = contentOf(key, 20);
  std::atomic<int>& inside = files.fetching[std::stoul(key)];
  const auto get = [&](EntryWriter& out) {
    const std::shared_ptr<void> leave(nullptr, [&](auto) { --inside; });
    EXPECT_EQ(1, ++inside) << "one thread at a time";
    writeInPieces(out, bytes);
  };
  const bool isKnown = random.pick(2) == 0;
  const std::string path =
      isKnown ? files.store->getOrFetch(key, static_cast<std::int64_t>(bytes.size()), sha256(bytes),
                                        get)
              : files.store->getOrFetch(key, get);
  EXPECT_TRUE(isWhole(key, readFile(path)));
}

void write(Files& files, Random& random) {
  const std::string key = random.key();
  const std::string bytes = contentOf(key, random() % 30);
  const auto out = files.store->write(key);
  writeInPieces(*out, bytes);
  out->commit();
}

TEST(Threads, shareAFileStore) {
  const TemporaryDirectory root;
  const BytesVector extra = {1, 2, 3};
  storm<Files>(
      [&](auto& files) { files.store = FileStore::open(root.path(), 100); },
      {&fetch, &fetch, &write,
       [](auto& files, auto& random) {
         const std::string key = random.key();
         const auto path = files.store->get(key);
         EXPECT_TRUE(!path || isWhole(key, readFile(*path)));
       },
       [](auto& files, auto& random) { files.store->remove(random.key()); },
       [&](auto& files, auto& random) { files.store->setExtra(random.key(), extra); },
       [&](auto& files, auto& random) {
         EXPECT_EQ(extra, files.store->extra(random.key()).value_or(extra));
       },
       [](auto& files, auto&) { EXPECT_LE(files.store->keys().size(), kKeys); },
       [](auto& files, auto&) { EXPECT_LE(files.store->size(), 150); },
       [](auto& files, auto& random) { files.store->setMaxSizeBytes(100 + random.pick(50)); },
       [](auto& files, auto&) { files.store->clear(); }});
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
