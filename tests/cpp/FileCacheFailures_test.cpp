// Failing storage, hostile keys, missing roots, damaged metadata, and links among the entries.
#include <gmock/gmock.h>

#include "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging.h"
#include "delivery/FileCache/createFileCache.h"
#include "delivery/FileCache/recoverMetadata.h"
#include "tests/cpp/Errors.h"
#include "tests/cpp/ObservedStorage.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

/// An operation of the file cache: its result, name and parameters, and a call, which returns
/// whether the result was the neutral one.
struct FileCacheCall {
  std::string result, name, parameters;
  std::function<bool(IFileCache&, const std::string& key)> call;

  /// The name in reports.
  std::string label() const { return name == "flushExtra" ? "flush" : name; }
};

const std::string kEntry = "std::shared_ptr<FileCacheEntry>", kKey = "const std::string &";
const FileCacheCall kFileCacheCalls[] = {
    {kEntry, "insertAndLock", kKey, [](auto& in, auto& key) { return !in.insertAndLock(key); }},
    {"void", "commit", kKey, [](auto& in, auto& key) { return in.commit(key), true; }},
    {"void", "commit", kKey + ", int64_t",
     [](auto& in, auto& key) { return in.commit(key, 1), true; }},
    {"void", "unlock", kKey, [](auto& in, auto& key) { return in.unlock(key), true; }},
    {kEntry, "getCacheEntry", kKey, [](auto& in, auto& key) { return !in.getCacheEntry(key); }},
    {kEntry, "getCacheEntryWithoutPromotion", kKey,
     [](auto& in, auto& key) { return !in.getCacheEntryWithoutPromotion(key); }},
    {"bool", "updateExtra", kKey + ", zentrel::vistabase::ardelivery::BytesVector &&",
     [](auto& in, auto& key) { return !in.updateExtra(key, {}); }},
    {"std::vector<std::pair<std::string, FileCacheEntryMeta> >", "getAllMetas", "",
     [](auto& in, auto&) { return in.getAllMetas().empty(); }},
    {"IFileCache::MemContainsStatus", "memContains", kKey,
     [](auto& in, auto& key) { return in.memContains(key) == IFileCache::MemContainsStatus(2); }},
    {"bool", "remove", kKey, [](auto& in, auto& key) { return !in.remove(key); }},
    {"int64_t", "getSize", "", [](auto& in, auto&) { return in.getSize() == 0; }},
    {"void", "clear", "", [](auto& in, auto&) { return in.clear(), true; }},
    {"void", "flushExtra", "", [](auto& in, auto&) { return in.flushExtra(), true; }},
};

enum class Faults { One, OneUnknown, FromThereOn };

/// Gives flushExtra something that can fail.
struct FlushingCache final : FileCacheImpl {
  using FileCacheImpl::FileCacheImpl;
  void flushExtra() override { getSize(); }
};

/// A cache with a few entries. Committing "k" evicts "victim"; no operation may touch "a" or "dir".
struct FailingCache {
  FailingCache() {
    root.write("metadata.json", R"({"entries":[{"key":"k","size":1,"lastAccess":3},)"
                                R"({"key":"a","size":3,"lastAccess":4},)"
                                R"({"key":"victim","size":90,"lastAccess":1},)"
                                R"({"key":"dir","size":4,"lastAccess":5}]})");
    root.write("k", std::string(150, 'k'));
    root.write("a", "aaa");
    root.write("victim", "v");
    root.write("dir/sub/file", "dddd");
    root.write("extra/a", "extra of a");
    root.write("extra/k", "extra of k");
  }

  void expectNothingLost() {
    EXPECT_EQ("aaa", root.read("a"));
    EXPECT_EQ("dddd", root.read("dir/sub/file"));
    EXPECT_EQ("extra of a", root.read("extra/a"));
    SoftErrorRecorder recorder;
    const auto again = createFileCache(root.path(), 1000);
    EXPECT_NE(nullptr, again->getCacheEntry("a"));
    EXPECT_NE(nullptr, again->insertAndLock("new"));
    EXPECT_EQ(IFileCache::MemContainsStatus::Present, again->memContains("dir"));
    EXPECT_TRUE(recorder.take().empty());
  }

  TemporaryDirectory root;
  Hook hook = [](auto&) {};
  std::shared_ptr<IFileCache> cache = std::make_shared<FileCacheWithErrorLogging>(
      observedCache<FlushingCache>(root.path(), 200, hook));
};

/// Calls the operation with each fault in turn until none strikes.
void failEachCall(const FileCacheCall& operation, Faults faults) {
  const std::string function =
      "virtual " + operation.result +
      " zentrel::vistabase::ardelivery::FileCacheWithErrorLogging::" + operation.name + "(" +
      operation.parameters + ")";
  const std::string prefix = "Error for " + operation.label() + ": ";
  const bool isUnknown = faults == Faults::OneUnknown;
  int fired = 1;
  for (int failing = 1; fired > 0; ++failing) {
    SCOPED_TRACE(failing);
    FailingCache it;
    fired = 0;
    it.hook = [&, call = 0](auto&) mutable {
      if (++call == failing || (faults == Faults::FromThereOn && call > failing)) {
        ++fired;
        isUnknown ? throw 1 : throw std::runtime_error("100%s");
      }
    };
    SoftErrorRecorder recorder;
    const std::ptrdiff_t descriptors = openDescriptors();
    const bool isNeutral = operation.call(*it.cache, "k");
    EXPECT_EQ(descriptors, openDescriptors());
    EXPECT_TRUE(fired > 0 || failing > 1) << "no fault was injected at all";
    const auto reports = recorder.take();
    ASSERT_EQ(fired > 0 ? 1u : 0u, reports.size());
    if (fired > 0) {
      EXPECT_TRUE(isNeutral);
      EXPECT_EQ(function, reports[0].function);
      EXPECT_EQ("delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging",
                reports[0].file);
      EXPECT_EQ("1 tessel", std::to_string(reports[0].severity) + " " + reports[0].category);
      EXPECT_EQ(prefix + (isUnknown ? "unknown error" : "%s"), reports[0].format);
      EXPECT_EQ(prefix + (isUnknown ? "unknown error" : "100%s"), reports[0].message);
      it.expectNothingLost();
    }
  }
}

TEST(FailingStorage, givesANeutralResultOneReportAndLosesNoOtherEntry) {
  for (const FileCacheCall& operation : kFileCacheCalls) {
    SCOPED_TRACE(operation.name + operation.parameters);
    for (const Faults faults : {Faults::One, Faults::OneUnknown, Faults::FromThereOn}) {
      failEachCall(operation, faults);
    }
  }
}

struct HostileDisk : testing::Test {
  TemporaryDirectory root_;
  SoftErrorRecorder errors_;
  std::shared_ptr<IFileCache> cache_ = createFileCache(root_.path(), 1000);
};

TEST_F(HostileDisk, refusesKeysWithoutAFileNameBeforeTouchingTheRoot) {
  const std::string root = "its file would be the root itself";
  const std::string own = "its file would be one of the cache's own";
  const struct {
    std::string key, quoted, reason;
  } cases[] = {
      {"", "", root},
      {".", ".", root},
      {"..", "..", "its file would lie outside the root"},
      {"/..", "/..", root + ", or a directory of other keys' files"},
      {"a/b/..", "a/b/..", root + ", or a directory of other keys' files"},
      {std::string("a\0b", 3), "a\\0b", "its file's name would be cut short at a zero byte"},
      {"metadata.json", "metadata.json", own},
      {"extra", "extra", own},
  };
  root_.write("k", "not recorded yet");
  for (const auto& [key, quoted, reason] : cases) {
    const std::string message = ": Refused the key '" + quoted + "': " + reason;
    for (const FileCacheCall& each : kFileCacheCalls) {
      if (!each.parameters.empty() && each.name != "memContains") {
        EXPECT_TRUE(each.call(*cache_, key)) << each.name;
        EXPECT_THAT(errors_.takeMessages(), ElementsAre("Error for " + each.name + message));
      }
    }
    EXPECT_FALSE(root_.has("metadata.json"));
    EXPECT_EQ(IFileCache::MemContainsStatus::Absent, cache_->memContains(key));
    EXPECT_TRUE(boost::filesystem::remove(root_ / "metadata.json")) << "memContains reloads first";
  }
}

TEST_F(HostileDisk, clearRemovesTheRootWithoutWhichReloadsFail) {
  cache_->clear();
  for (const auto& [result, name, parameters, call] : kFileCacheCalls) {
    if (name != "flushExtra" && name != "getCacheEntryWithoutPromotion") {  // These do not reload.
      EXPECT_TRUE(call(*cache_, "k")) << name;
      EXPECT_THAT(errors_.takeMessages(),
                  ElementsAre(StartsWith("Error for " + name + ": Could not iterate over '")));
    }
  }
  cache_->flushExtra();
  EXPECT_EQ(nullptr, cache_->getCacheEntryWithoutPromotion("k"));
  EXPECT_THAT(errors_.takeMessages(), ElementsAre());
}

TEST_F(HostileDisk, removesLinksButNotTheirTargets) {
  const TemporaryDirectory outside;
  outside.write("file", "outside");
  outside.write("dir/file", "outside");
  const auto cache = createFileCache(root_.path(), 0);
  for (const bool evict : {false, true}) {
    root_.write("entry/own", "1");
    for (const std::string link : {"file", "entry/file"}) {
      boost::filesystem::create_symlink(outside / "file", root_ / link);
    }
    for (const std::string link : {"dir", "entry/dir", "slash%", "dot%"}) {
      boost::filesystem::create_symlink(outside / "dir", root_ / link);
    }
    if (evict) {
      cache->commit("dir");
    }
    for (const std::string key : {"file", "dir", "entry", "slash/", "dot/."}) {
      EXPECT_NE(evict, cache->remove(key)) << key;
    }
    EXPECT_EQ("outsideoutside", outside.read("file") + outside.read("dir/file"));
  }
  EXPECT_THAT(errors_.takeMessages(), ElementsAre());
}

TEST_F(HostileDisk, recoverySetsDamagedMetadataAside) {
  using Is = MetadataRecovery;
  const std::string file = root_ / "metadata.json";
  EXPECT_EQ(Is::NothingToMend, recoverMetadata(root_.path()));
  for (const char* inFolder : {"metadata.json/a", "metadata.json", "metadata.json/b"}) {
    root_.write(inFolder, "{");
    EXPECT_EQ(Is::SetAside, recoverMetadata(root_.path())) << inFolder;
    EXPECT_EQ(0, cache_->getSize());
    boost::filesystem::remove(file);
  }
  EXPECT_TRUE(root_.has(".metadata.json.damaged/b"));
  boost::filesystem::create_symlink("/proc/self/mem", file);
  EXPECT_THROW(recoverMetadata(root_.path()), std::runtime_error) << "unreadable, maybe intact";
  EXPECT_TRUE(root_.has("metadata.json"));
}

TEST_F(HostileDisk, recoveryKeepsGoodMetadataWrittenMeanwhile) {
  const std::string first = R"({"entries":[]})", second = R"({"entries": []})";
  for (const bool isReplacedAgain : {false, true}) {
    root_.write("metadata.json", "{");
    const Hook hook = [&, wasMoved = false](auto& operation) mutable {
      if (operation == "moveFile" && !std::exchange(wasMoved, true)) {
        root_.write("metadata.json", first);
      } else if (operation == "readFile" && wasMoved && isReplacedAgain) {
        root_.write("metadata.json", second);
      }
    };
    ObservedFileIO io(hook);
    ObservedFilesystem filesystem(hook);
    EXPECT_EQ(MetadataRecovery::NothingToMend, recoverMetadata(root_.path(), io, filesystem));
    EXPECT_EQ(isReplacedAgain ? second : first, root_.read("metadata.json"));
    EXPECT_FALSE(root_.has(".metadata.json.damaged"));
  }
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
