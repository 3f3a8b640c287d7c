#include "store/DiskFileStore.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <stdexcept>
#include <utility>

#include "delivery/FileNames.h"
#include "store/EntryDirectory.h"
#include "store/FileKey.h"
#include "store/PartWriter.h"
#include "store/fileTrees.h"
#include "store/noRoom.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {
namespace {

/// What a fetch writes to. Only the store commits and closes.
class FetchWriter final : public EntryWriter {
 public:
  explicit FetchWriter(EntryWriter& writer) noexcept : writer_(writer) {}

  std::int64_t offset() const override { return writer_.offset(); }
  void write(const void* bytes, std::size_t count) override { writer_.write(bytes, count); }
  void restart() override { writer_.restart(); }
  void commit() override {}
  void close() override {}

 private:
  EntryWriter& writer_;
};

void fetchInto(EntryWriter& writer, const FileStore::Fetch& fetch) {
  FetchWriter out(writer);
  fetch(out);
  writer.commit();
}

}  // namespace

struct DiskFileStore::State final : PartOwner {
  explicit State(std::shared_ptr<StoreRoot> opened)
      : root(std::move(opened)), entries(root->directory()) {}

  /// Syncs the root without the lock, so that other threads can proceed.
  void place(const PartPlan& plan, std::int64_t bytes) override {
    const std::string& name = plan.entry;
    const std::string& part = plan.part;
    std::uint64_t place = 0;
    {
      const auto lock = root->lockForChange();
      measureResumable();
      entries.measure(name);
      const std::set<std::string> active = root->writers().parts();
      entries.makeRoom(
          bytes - entries.size(name) - entries.size(part), root->maxSizeBytes(),
          [&](const std::string& each) { return each == name || active.count(each) != 0; });
      place = ++placed;  // First, since a call that fails may still take effect.
      entries.place(part, name);
      measureResumable();
    }
    root->directory().sync();
    const auto lock = root->lockEvenIfClosed();
    synced = std::max(synced, place);
  }

  void requireRunning() const override {}

  /// Call with the lock held, before writing anything that must not outlive an entry's content.
  void syncPlaced() {
    if (synced < placed) {
      root->directory().sync();
      synced = placed;
    }
  }

  /// Resumable parts grow while they are written; once nobody does, their size is final.
  void measureResumable() {
    const std::set<std::string> active = root->writers().parts();
    for (auto part = resumable.begin(); part != resumable.end();) {
      entries.measure(*part);
      part = active.count(*part) != 0 ? std::next(part) : resumable.erase(part);
    }
  }

  bool has(const std::string& name) { return !root->directory().status(name).isAbsent(); }

  std::unique_ptr<EntryWriter> write(const std::string& name,
                                     std::optional<ExpectedContent> expected,
                                     const std::shared_ptr<State>& self) {
    const StoreCall call(*root);
    std::unique_ptr<PartHandle> writer;
    {
      const auto lock = root->lockForChange();
      std::string part = std::string(kPartPrefix) + name;
      if (expected) {
        const std::string kept = std::string(kResumePrefix) + expected->sha256;
        // If two entries are written with the same content at once, only one is resumable.
        if (root->writers().parts().count(kept) == 0) {
          part = kept;
          resumable.insert(part);
        }
      }
      writer = std::make_unique<PartHandle>(root, PartPlan{self, name, part, std::move(expected)});
    }
    writer->resume();
    return writer;
  }

  const std::shared_ptr<StoreRoot> root;
  // Guarded by the root's lock:
  EntryDirectory entries;
  std::set<std::string> resumable;  // Names of parts that were written since they were measured.
  std::uint64_t placed = 0;         // Entries placed so far,
  std::uint64_t synced = 0;         // and how many of their names are durable.
};

std::unique_ptr<FileStore> DiskFileStore::open(const std::string& root, std::int64_t maxSizeBytes,
                                               const StoreEnvironment& environment) {
  const auto opened = std::make_shared<StoreRoot>(root, maxSizeBytes, environment);
  auto store = std::make_unique<DiskFileStore>(opened);
  const StoreCall call(*opened);
  opened->claim(RootContent{});
  EntryDirectory& entries = store->state_->entries;
  try {
    entries.dropUnfinished();
  } catch (const StoreError& error) {
    opened->report(error.what());  // A read-only disk, say: its entries are still readable.
  }
  entries.reload();
  return store;
}

DiskFileStore::DiskFileStore(std::shared_ptr<StoreRoot> root)
    : state_(std::make_shared<State>(std::move(root))) {}

DiskFileStore::~DiskFileStore() {
  const StoreCall call(*state_->root, std::nothrow);
  state_->root->close();
}

std::optional<std::string> DiskFileStore::get(const std::string& key) {
  const std::string name = nameOfKey(key);
  StoreRoot& root = *state_->root;
  const StoreCall call(root);
  const auto lock = root.lock();
  if (state_->entries.use(name)) {
    return root.pathOf(name);
  }
  if (root.directory().status().links == 0) {
    throw StoreError(StoreError::Reason::Io, "the root was deleted: " + root.path(), root.path());
  }
  return std::nullopt;
}

std::unique_ptr<EntryWriter> DiskFileStore::write(const std::string& key) {
  return state_->write(nameOfKey(key), std::nullopt, state_);
}

std::unique_ptr<EntryWriter> DiskFileStore::write(const std::string& key, std::int64_t sizeBytes,
                                                  const std::string& sha256) {
  const std::string name = nameOfKey(key);
  ExpectedContent expected{key, sizeBytes, requireDigest(sha256)};
  if (sizeBytes < 0) {
    throw std::invalid_argument(joined("negative size of ", key, ": ", sizeBytes));
  }
  const std::int64_t budget = state_->root->maxSizeBytes();
  if (sizeBytes > budget) {
    throw noRoom(joined(key, " has ", sizeBytes, " bytes, but the budget is ", budget), {},
                 state_->root->directory(), sizeBytes, budget);
  }
  return state_->write(name, std::move(expected), state_);
}

std::string DiskFileStore::getOrFetch(const std::string& key, const Fetch& fetch) {
  state_->root->requireOpen();  // Also for a caller that would only wait.
  return flights_.run(nameOfKey(key), [&] {
    if (const auto path = get(key)) {
      return *path;
    }
    fetchInto(*write(key), fetch);
    return state_->root->pathOf(nameOfKey(key));
  });
}

std::string DiskFileStore::getOrFetch(const std::string& key, std::int64_t sizeBytes,
                                      const std::string& sha256, const Fetch& fetch) {
  state_->root->requireOpen();  // Also for a caller that would only wait.
  const std::string name = nameOfKey(key);
  // Only callers who expect the same content share a fetch.
  return flights_.run(joined(name, "/", sizeBytes, "/", sha256), [&] {
    const auto path = get(key);
    if (path && state_->root->directory().status(name).size == sizeBytes) {
      return *path;
    }
    fetchInto(*write(key, sizeBytes, sha256), fetch);
    return state_->root->pathOf(name);
  });
}

bool DiskFileStore::remove(const std::string& key) {
  const std::string name = nameOfKey(key);
  const StoreCall call(*state_->root);
  const auto lock = state_->root->lockForChange();
  const bool isRemoved = state_->entries.drop(name);
  if (isRemoved) {
    state_->root->directory().sync();
  }
  return isRemoved;
}

void DiskFileStore::clear() {
  const StoreCall call(*state_->root);
  const auto lock = state_->root->lockForChange();
  const std::set<std::string> active = state_->root->writers().parts();
  state_->entries.reload();
  for (const std::string& name : state_->entries.names()) {
    if (active.count(name) == 0) {
      state_->entries.drop(name);
    }
  }
  state_->root->directory().sync();
}

std::optional<BytesVector> DiskFileStore::extra(const std::string& key) {
  const std::string name = nameOfKey(key);
  const StoreCall call(*state_->root);
  const auto lock = state_->root->lock();
  const auto bytes = state_->has(name) ? state_->entries.extras().read(name) : std::nullopt;
  return bytes ? std::optional<BytesVector>(std::in_place, bytes->begin(), bytes->end())
               : std::nullopt;
}

bool DiskFileStore::setExtra(const std::string& key, const BytesVector& extra) {
  const std::string name = nameOfKey(key);
  if (extra.size() > static_cast<std::size_t>(kLargestOwnFile)) {
    throw std::invalid_argument(joined(extra.size(), " extra bytes, more than ", kLargestOwnFile));
  }
  const StoreCall call(*state_->root);
  const auto lock = state_->root->lockForChange();
  if (!state_->has(name)) {
    return false;
  }
  state_->syncPlaced();
  state_->entries.extras().replace(name,
                                   {reinterpret_cast<const char*>(extra.data()), extra.size()});
  return true;
}

std::vector<std::string> DiskFileStore::keys() {
  const StoreCall call(*state_->root);
  const auto lock = state_->root->lock();
  state_->entries.reload();
  std::vector<std::string> keys;
  for (const std::string& name : state_->entries.names()) {
    if (auto key = keyOfName(name)) {
      keys.push_back(std::move(*key));
    }
  }
  return keys;
}

std::int64_t DiskFileStore::size() {
  const StoreCall call(*state_->root);
  const auto lock = state_->root->lock();
  state_->entries.reload();
  std::int64_t total = 0;
  for (const std::string& name : state_->entries.names()) {
    total = addSizes(total, isEntryName(name) ? state_->entries.size(name) : 0);
  }
  return total;
}

void DiskFileStore::setMaxSizeBytes(std::int64_t bytes) {
  const StoreCall call(*state_->root);
  state_->root->requireOpen();
  state_->root->setMaxSizeBytes(bytes);
}

void DiskFileStore::close() {
  const StoreCall call(*state_->root);
  state_->root->close();
}

}  // namespace zentrel::vistabase::ardelivery
