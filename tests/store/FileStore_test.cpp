#include <atomic>
#include <cerrno>
#include <functional>
#include <future>
#include <thread>

#include "store/DiskFileStore.h"
#include "store/FileKey.h"
#include "tests/cpp/TemporaryDirectory.h"
#include "tests/store/Samples.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;
using Reason = StoreError::Reason;

/// A store with a budget of 100 bytes on a simulated disk.
class FileStoreTest : public testing::Test {
 protected:
  void open() {
    store_.reset();
    store_ = DiskFileStore::open(kRoot, 100, disk_.environment());
  }
  void openOn(const Image& image) {
    store_.reset();
    disk_ = SimulatedDisk(image);
    open();
  }
  void write(const std::string& key, std::size_t size) {
    put(*store_->write(key), std::string(size, 'x'));
  }

  const SoftErrors softErrors_;
  SimulatedDisk disk_;
  std::unique_ptr<FileStore> store_ = DiskFileStore::open(kRoot, 100, disk_.environment());
};

TEST_F(FileStoreTest, takesAnyTextAsAKey) {
  std::vector<std::string> keys = {
      "plain-key_1.bin", "a/b", "..",     ".",     ".hidden",         "metadata.json", "extra",
      "versioned_index", "%",   "%extra", "%0041", "gr\u00F6\u00DFe", "\U0001F600",    " ",
      "\xED\xA0\xBD",    "a:b", "\n"};
  keys.emplace_back(1, '\0');
  keys.emplace_back(kLongestKeyName, 'x');
  for (const std::string& key : keys) {
    write(key, 1);
    EXPECT_TRUE(store_->setExtra(key, {key.begin(), key.end()}));
  }
  open();
  EXPECT_THAT(store_->keys(), UnorderedElementsAreArray(keys));
  for (const std::string& key : keys) {
    EXPECT_EQ(kRoot + ("/" + nameOfKey(key)), store_->get(key));
    EXPECT_EQ(BytesVector(key.begin(), key.end()), store_->extra(key));
    EXPECT_TRUE(store_->remove(key));
  }
  EXPECT_THAT(store_->keys(), IsEmpty());
}

TEST_F(FileStoreTest, refusesBadArguments) {
  const std::string digest = sha256("");
  const std::function<void()> calls[] = {
      [&] { store_->get(""); },
      [&] { store_->get("\xFF"); },
      [&] { store_->write("\xE0\x80\x80"); },
      [&] { store_->remove(std::string(kLongestKeyName + 1, 'x')); },
      [&] { store_->write("k", -1, digest); },
      [&] { store_->write("k", 1, digest.substr(1)); },
      [&] { store_->setExtra("k", BytesVector((std::size_t{16} << 20) + 1)); },
      [&] { store_->setMaxSizeBytes(-1); },
      [&] { FileStore::open("/nowhere", -1); }};
  for (std::size_t i = 0; i < std::size(calls); ++i) {
    EXPECT_THROW(calls[i](), std::invalid_argument) << i;
  }
}

TEST_F(FileStoreTest, evictsTheLeastRecentlyUsedWhateverTheClock) {
  for (const std::int64_t granularity : {1, 1'000'000'000}) {
    openOn({});
    disk_.granularity = granularity;
    for (const std::string key : {"d", "c", "b", "a"}) {
      write(key, 25);
    }
    // As if the clock had been ahead by years when "b" was used.
    disk_.environment().openRoot(kRoot)->touch("b", std::int64_t{4'000'000'000} * 1'000'000'000);
    open();
    store_->get("d");
    write("e", 25);
    EXPECT_THAT(store_->keys(), UnorderedElementsAre("a", "b", "d", "e"));
    open();
    write("f", 50);
    EXPECT_THAT(store_->keys(), UnorderedElementsAre("d", "e", "f"));
  }
}

TEST_F(FileStoreTest, keepsTheOldEntryUntilTheNewOneIsCommitted) {
  write("key", 10);
  store_->setExtra("key", {1});
  const auto out = store_->write("key");
  out->write("12345", 5);
  EXPECT_THROW(store_->write("key"), UsageError);
  out->close();
  EXPECT_EQ(0u, disk_.now().count(".part-key"));
  EXPECT_EQ(Reason::Io, reasonOf([&] { out->write("1", 1); }));
  for (const auto& [call, name] : {std::pair("rename", "key"), std::pair("syncDirectory", "")}) {
    disk_.failOnce(call, name, EIO);
    EXPECT_EQ(Reason::Io, reasonOf([&] { write("key", 20); }));
  }
  disk_.failOnce("remove", "key", EIO);
  EXPECT_EQ(Reason::Io, reasonOf([&] { store_->remove("key"); }));
  EXPECT_EQ(10u, disk_.now()["key"].size());
  EXPECT_EQ(BytesVector{1}, store_->extra("key"));
}

TEST_F(FileStoreTest, keepsPartsThatAreBeingWritten) {
  const std::string known(40, 'k');
  const auto one = store_->write("one", 40, sha256(known));
  const auto two = store_->write("two", 40, sha256(known));
  one->write(known.data(), 40);
  store_->clear();
  write("other", 60);
  write("another", 60);
  EXPECT_THAT(store_->keys(), ElementsAre("another"));
  EXPECT_EQ(Reason::NoRoom, reasonOf([&] { write("large", 61); }));
  one->commit();
  put(*two, known);
  EXPECT_THAT(store_->keys(), UnorderedElementsAre("one", "two"));
}

TEST_F(FileStoreTest, commitsInAsManyCallsHoweverMuchWasWrittenBefore) {
  const auto callsOfACommit = [this] {
    int calls = 0;
    disk_.hook = [&](auto, auto&) { ++calls; };
    write("key", 1);
    disk_.hook = [](auto, auto&) {};
    return calls;
  };
  write("key", 1);
  const int before = callsOfACommit();
  for (const std::string content : {"a", "b", "c", "d", "e", "f"}) {
    put(*store_->write("known", 1, sha256(content)), content);
  }
  EXPECT_EQ(before, (callsOfACommit(), callsOfACommit())) << "once the last part is measured";
}

TEST_F(FileStoreTest, refusesASinkThatCallsItFromADestructor) {
  softerror::setSink({[](const softerror::Report&, void* store) {
                        ++SoftErrors::count;
                        EXPECT_THROW(static_cast<FileStore*>(store)->close(), UsageError);
                      },
                      store_.get()});
  auto out = store_->write("key");
  disk_.failOnce("remove", ".part-key", EIO);
  out.reset();
  EXPECT_EQ(1, SoftErrors::count);
}

TEST_F(FileStoreTest, resumesPartsOfKnownContentThatAreIntact) {
  const std::string right(40, 'k'), wrong(40, 'w'), part = ".resume-" + sha256(right);
  const std::pair<std::string, std::int64_t> cases[] = {
      {right, 40}, {wrong, 0}, {right + right, 0}, {right.substr(20), 0}};
  for (const auto& [left, offset] : cases) {
    openOn({{part, left}});
    left.size() == 20 ? disk_.failOnce("read", part, EIO) : void();
    EXPECT_EQ(offset, store_->write("key", 40, sha256(right))->offset());
    disk_.failOnce("sync", part, EIO);
    EXPECT_EQ(Reason::Io, reasonOf([&] { put(*store_->write("key", 40, sha256(right)), right); }));
    EXPECT_EQ(0, store_->write("key", 40, sha256(right))->offset()) << "it may not be durable";
  }
}

TEST_F(FileStoreTest, countsAndClearsFilesOfOthers) {
  openOn({{"dir/sub/file", std::string(40, 'x')},
          {"un%named", "12345"},
          {".hidden", "kept"},
          {"metadata.json", "kept"}});
  EXPECT_EQ(45, store_->size());
  EXPECT_THAT(store_->keys(), ElementsAre("dir"));
  write("dir", 100);
  EXPECT_EQ(100, store_->size());
  disk_.environment().openRoot(kRoot)->create("new");
  store_->clear();
  Image left = disk_.now();
  EXPECT_EQ("keptkept", left[".hidden"] + left["metadata.json"]);
  EXPECT_EQ(0u, left.count("dir") + left.count("new"));
}

TEST_F(FileStoreTest, fetchesAMissingEntryOnce) {
  write("key", 1);  // Of another size than is asked for.
  int fetches = 0;
  const auto fetch = [&fetches](EntryWriter& out) {
    ++fetches;
    put(out, "abc");
  };
  EXPECT_EQ("/root/key", store_->getOrFetch("key", 3, sha256("abc"), fetch));
  EXPECT_EQ("/root/key", store_->getOrFetch("key", 3, sha256("abc"), fetch));
  EXPECT_EQ(1, fetches);
  EXPECT_EQ("abc", disk_.now()["key"]);
}

TEST_F(FileStoreTest, keepsNothingOfAFetchThatThrows) {
  const auto failing = [](EntryWriter& out) {
    put(out, "1");
    throw std::domain_error("of the host");
  };
  EXPECT_THROW(store_->getOrFetch("key", failing), std::domain_error);
  EXPECT_EQ(std::nullopt, store_->get("key"));
  const auto nested = [&](EntryWriter&) { store_->getOrFetch("key", failing); };
  EXPECT_THROW(store_->getOrFetch("key", nested), UsageError) << "it would wait for itself";
}

TEST_F(FileStoreTest, refusesFetchesThatWouldWaitForEachOther) {
  const TemporaryDirectory root;  // Simulated disks are for one thread.
  const auto store = FileStore::open(root.path(), 100);
  std::atomic<int> inside{0};
  const auto cross = [&](const std::string& own, const std::string& other) {
    store->getOrFetch(own, [&](EntryWriter&) {
      for (++inside; inside < 2;) {
        std::this_thread::yield();
      }
      store->getOrFetch(other, [](EntryWriter&) {});
    });
  };
  auto thread = std::async(std::launch::async, cross, "x", "y");
  EXPECT_THROW(cross("y", "x"), UsageError);
  EXPECT_THROW(thread.get(), UsageError) << "one is refused; the other, which waits for it, fails";
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
