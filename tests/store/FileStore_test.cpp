#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <thread>

#include "delivery/FileNames.h"
#include "store/DiskFileStore.h"
#include "store/FileKey.h"
#include "tests/store/Samples.h"
#include "tests/store/SimulatedDisk.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;
using Reason = StoreError::Reason;

constexpr const char* kRoot = "/root";

class FileStoreTest : public testing::Test {
 protected:
  void open() {
    store_.reset();
    store_ = DiskFileStore::open(kRoot, 100, disk_.environment());
  }
  void write(const std::string& key, std::size_t size) {
    put(*store_->write(key), std::string(size, 'x'));
  }
  std::string read(const std::string& key) { return disk_.now()[nameOfKey(key)]; }
  BytesVector extraOf(const std::string& key) { return store_->extra(key).value_or(BytesVector()); }

  const SoftErrors softErrors_;
  SimulatedDisk disk_;
  std::unique_ptr<FileStore> store_ = DiskFileStore::open(kRoot, 100, disk_.environment());
};

TEST_F(FileStoreTest, takesAnyTextAsAKey) {
  const std::vector<std::string> keys = {"plain-key_1.bin",
                                         "a/b",
                                         "..",
                                         ".",
                                         ".hidden",
                                         "metadata.json",
                                         "extra",
                                         "versioned_index",
                                         "%",
                                         "%extra",
                                         "%0041",
                                         "gr\u00F6\u00DFe",
                                         "\U0001F600",
                                         "\xED\xA0\xBD",
                                         "a:b",
                                         std::string(1, '\0'),
                                         " ",
                                         std::string(kLongestKeyName, 'x')};
  for (const std::string& key : keys) {
    write(key, 1);
    EXPECT_TRUE(store_->setExtra(key, {key.begin(), key.end()}));
  }
  open();
  EXPECT_THAT(store_->keys(), UnorderedElementsAreArray(keys));
  for (const std::string& key : keys) {
    EXPECT_EQ(kRoot + ("/" + nameOfKey(key)), store_->get(key));
    EXPECT_EQ(BytesVector(key.begin(), key.end()), extraOf(key));
    EXPECT_TRUE(store_->remove(key));
    EXPECT_FALSE(store_->remove(key));
    EXPECT_EQ(std::nullopt, store_->get(key));
    EXPECT_EQ(std::nullopt, store_->extra(key));
    EXPECT_FALSE(store_->setExtra(key, {1}));
  }
  EXPECT_THAT(store_->keys(), IsEmpty());
}

TEST_F(FileStoreTest, refusesBadArguments) {
  const std::string digest = sha256("");
  const std::vector<std::function<void()>> calls = {
      [&] { store_->get(""); },
      [&] { store_->get("\xFF"); },
      [&] { store_->write("\xE0\x80\x80"); },
      [&] { store_->remove(std::string(kLongestKeyName + 1, 'x')); },
      [&] { store_->write("k", -1, digest); },
      [&] { store_->write("k", 1, digest.substr(1)); },
      [&] { store_->setExtra("k", BytesVector((std::size_t{16} << 20) + 1)); },
      [&] { store_->setMaxSizeBytes(-1); },
      [&] { FileStore::open("/nowhere", -1); }};
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_THROW(calls[i](), std::invalid_argument) << i;
  }
}

TEST_F(FileStoreTest, evictsWhatWasNotUsedForLongestWhateverTheClockSays) {
  for (const std::string key : {"a", "b", "c", "d"}) {
    write(key, 25);
  }
  // As if the clock had been ahead by years when "b" was used.
  disk_.environment().openRoot(kRoot)->touch("b", std::int64_t{4'000'000'000} * 1'000'000'000);
  open();
  store_->get("a");
  write("e", 30);
  EXPECT_THAT(store_->keys(), UnorderedElementsAre("a", "b", "e"));
  open();
  write("f", 50);
  EXPECT_THAT(store_->keys(), UnorderedElementsAre("e", "f"));
}

TEST_F(FileStoreTest, keepsTheOrderOfUseOnFileSystemsWithoutFractions) {
  disk_.granularity = 1'000'000'000;
  for (const std::string key : {"c", "b", "a"}) {
    write(key, 30);
  }
  open();
  write("d", 30);
  EXPECT_THAT(store_->keys(), UnorderedElementsAre("a", "b", "d"));
}

TEST_F(FileStoreTest, neverWritesMoreThanTheBudget) {
  write("a", 60);
  const auto out = store_->write("b");
  EXPECT_EQ(Reason::NoRoom, reasonOf([&] { put(*out, std::string(101, 'x')); }));
  EXPECT_EQ(Reason::NoRoom, reasonOf([&] { store_->write("b", 101, sha256("")); }));
  EXPECT_THAT(store_->keys(), ElementsAre("a"));
  store_->setMaxSizeBytes(59);
  EXPECT_THAT(store_->keys(), ElementsAre("a")) << "until the next commit";
  write("a", 59);
  EXPECT_EQ(59, store_->size());
}

TEST_F(FileStoreTest, looksAtTheDiskAgainBeforeItFailsForLackOfRoom) {
  write("a", 60);
  store_->close();
  disk_ = SimulatedDisk(disk_.now());
  open();
  disk_.environment().openRoot(kRoot)->remove("a");
  const auto other = store_->write("b");
  write("c", 100);
  EXPECT_EQ(100, store_->size());
}

TEST_F(FileStoreTest, keepsTheOldEntryUntilTheNewOneIsCommitted) {
  write("key", 10);
  const auto out = store_->write("key");
  out->write("12345", 5);
  EXPECT_EQ(10u, read("key").size());
  EXPECT_THROW(store_->write("key"), UsageError);
  out->close();
  EXPECT_EQ(0u, disk_.now().count(".part-key"));
  EXPECT_EQ(Reason::Io, reasonOf([&] { out->write("1", 1); }));
  EXPECT_EQ(10u, read("key").size());
}

TEST_F(FileStoreTest, hasExtraBytesGoWithTheirContent) {
  write("key", 10);
  store_->setExtra("key", {1, 0, 255});
  EXPECT_EQ((BytesVector{1, 0, 255}), extraOf("key"));
  EXPECT_EQ(std::string("\1\0\xFF", 3), disk_.now()["extra/key"]) << "bare, for raw readers";
  write("key", 20);
  EXPECT_EQ(std::nullopt, store_->extra("key"));
  store_->setExtra("key", {2});
  store_->remove("key");
  EXPECT_EQ(0u, disk_.now().count("extra/key"));
}

TEST_F(FileStoreTest, leavesTheExtraBytesOfAnEntryThatCouldNotBeReplaced) {
  write("key", 10);
  store_->setExtra("key", {1});
  bool hasFailed = false;
  disk_.hook = [&hasFailed](std::string_view call, const std::string& name) {
    if (call == "rename" && name == "key" && !std::exchange(hasFailed, true)) {
      throw StoreError::ofSystem("simulate", name, EIO, true);
    }
  };
  EXPECT_EQ(Reason::Io, reasonOf([&] { write("key", 20); }));
  EXPECT_EQ(BytesVector{1}, extraOf("key"));
}

TEST_F(FileStoreTest, resumesKnownContentInALaterProcess) {
  const std::string bytes(50, 'k');
  store_->write("key", 50, sha256(bytes))->write(bytes.data(), 20);
  open();
  EXPECT_THAT(store_->keys(), IsEmpty());
  EXPECT_EQ(0, store_->size());
  auto out = store_->write("key", 50, sha256(bytes));
  EXPECT_EQ(20, out->offset());
  EXPECT_EQ(Reason::TooShort, reasonOf([&] { out->commit(); }));
  out = store_->write("key", 50, sha256(bytes));
  out->restart();
  EXPECT_EQ(Reason::WrongContent, reasonOf([&] { put(*out, std::string(50, 'w')); }));
  put(*store_->write("key", 50, sha256(bytes)), bytes);
  EXPECT_EQ(bytes, read("key"));
}

TEST_F(FileStoreTest, makesRoomOfPartsThatNobodyResumes) {
  store_->write("key", 100, sha256("?"))->write(std::string(90, 'x').data(), 90);
  open();
  write("other", 20);
  EXPECT_EQ(2u, disk_.now().size() - disk_.now().count(kLockName)) << "the entry, and the marker";
}

TEST_F(FileStoreTest, takesTheSameContentForTwoKeysAtATime) {
  const auto one = store_->write("one", 3, sha256("abc"));
  const auto two = store_->write("two", 3, sha256("abc"));
  put(*two, "abc");
  put(*one, "abc");
  EXPECT_THAT(store_->keys(), UnorderedElementsAre("one", "two"));
}

TEST_F(FileStoreTest, countsAndClearsWhatOthersPutThere) {
  disk_ = SimulatedDisk({{"dir/sub/file", std::string(40, 'x')},
                         {"dir/", ""},
                         {"dir/sub/", ""},
                         {"un%named", "12345"},
                         {".hidden", "kept"},
                         {"metadata.json", "kept"}});
  open();
  EXPECT_EQ(45, store_->size());
  EXPECT_THAT(store_->keys(), ElementsAre("dir"));
  write("dir", 100);
  EXPECT_EQ(100, store_->size());
  store_->clear();
  EXPECT_EQ(0, store_->size());
  EXPECT_EQ("kept", disk_.now()[".hidden"] + disk_.now()["metadata.json"].substr(4));
}

TEST_F(FileStoreTest, fetchesOnceForAllThreads) {
  std::atomic<int> fetches{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      EXPECT_EQ(kRoot + std::string("/key"), store_->getOrFetch("key", [&](EntryWriter& out) {
        ++fetches;
        out.write("1234567", 7);
        out.close();
        out.commit();  // Both are the store's business.
      }));
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(1, fetches);
  EXPECT_EQ("1234567", read("key"));
}

TEST_F(FileStoreTest, throwsWhatAFetchThrowsAndKeepsNothingOfIt) {
  EXPECT_THROW(store_->getOrFetch("key",
                                  [](EntryWriter& out) {
                                    out.write("1", 1);
                                    throw std::domain_error("as it is");
                                  }),
               std::domain_error);
  EXPECT_EQ(std::nullopt, store_->get("key"));
  EXPECT_THROW(store_->getOrFetch(
                   "key", [&](EntryWriter&) { store_->getOrFetch("key", [](EntryWriter&) {}); }),
               UsageError);
  store_->getOrFetch("key", [](EntryWriter&) {});
}

TEST_F(FileStoreTest, refusesFetchesThatWaitForEachOther) {
  std::atomic<int> inside{0};
  std::atomic<int> refused{0};
  const auto cross = [&](const std::string& own, const std::string& other) {
    try {
      store_->getOrFetch(own, [&](EntryWriter&) {
        for (++inside; inside < 2;) {
          std::this_thread::yield();
        }
        store_->getOrFetch(other, [](EntryWriter&) {});
      });
    } catch (const UsageError&) {
      ++refused;
    }
  };
  std::thread thread(cross, "x", "y");
  cross("y", "x");
  thread.join();
  EXPECT_EQ(2, refused) << "one is refused, and the other waits for it";
}

TEST_F(FileStoreTest, fetchesKnownContentAgainIfTheSizeDiffers) {
  write("key", 1);
  for (int i = 0; i < 2; ++i) {
    store_->getOrFetch("key", 3, sha256("abc"), [&](EntryWriter& out) {
      EXPECT_EQ(0, i);
      EXPECT_EQ(0, out.offset());
      out.write("abc", 3);
    });
  }
  EXPECT_EQ("abc", read("key"));
}

TEST_F(FileStoreTest, tellsThatItsRootIsGone) {
  disk_.isDeleted = true;
  EXPECT_EQ(Reason::Io, reasonOf([&] { store_->get("key"); }));
}

TEST_F(FileStoreTest, isNothingOnceClosed) {
  const auto out = store_->write("key");
  store_->close();
  const std::vector<std::function<void()>> calls = {
      [&] { store_->get("k"); },
      [&] { store_->write("k"); },
      [&] { store_->write("k", 1, sha256("")); },
      [&] { store_->getOrFetch("k", [](EntryWriter&) {}); },
      [&] { store_->remove("k"); },
      [&] { store_->clear(); },
      [&] { store_->extra("k"); },
      [&] { store_->setExtra("k", {}); },
      [&] { store_->keys(); },
      [&] { store_->size(); },
      [&] { store_->setMaxSizeBytes(1); },
      [&] { out->commit(); }};
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_THROW(calls[i](), UsageError) << i;
  }
  store_->close();
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
