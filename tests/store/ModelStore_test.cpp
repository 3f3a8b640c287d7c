// Versions: updating to them, and switching between them.

#include <cerrno>
#include <functional>

#include "store/DiskFileStore.h"
#include "store/VersionTableFile.h"
#include "tests/store/Samples.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using namespace samples;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST_F(ModelStoreTest, asksForFilesThatNoVersionHas) {
  getVersions({1});
  {
    const auto update = store_->begin(2, files2_);
    EXPECT_THAT(update->missing(), ElementsAre(files2_[0], files2_[1]));
    update->write(files2_[0])->write("12345", 5);
    EXPECT_EQ(kVersionSize, update->totalBytes());
    EXPECT_EQ(2 * kSize - 5, update->remainingBytes());
    EXPECT_THROW(update->activate(), UsageError);
  }
  EXPECT_THAT(store_->begin(3, files1_)->missing(), IsEmpty());
  EXPECT_FALSE(has(".part-" + nameOf(files2_[0]))) << "no file of this version";
  EXPECT_THAT(versions(), ElementsAre(1, 3));
  EXPECT_EQ(files1_[2], store_->files(3)[2].file);
  expectActive(1);
}

TEST_F(ModelStoreTest, replacesARepublishedVersionOnActivation) {
  getVersions({1});
  std::vector<ModelFile> files;
  for (const std::string& type : kCapability.types()) {
    files.push_back(fileOf(type, bytesOf(kCapability.types()[0], 2)));
  }
  const auto update = store_->begin(1, files);
  EXPECT_THAT(update->missing(), ElementsAre(files[0])) << "all four have the same bytes";
  download(*update, files[0], 2);
  expectActive(1);
  update->activate();
  open();
  const auto paths = store_->snapshot()->paths;
  EXPECT_THAT(paths, SizeIs(4));
  EXPECT_EQ(paths.begin()->second, paths.rbegin()->second);
}

TEST_F(ModelStoreTest, keepsShortBytesForALaterProcessAndDropsWrongOnes) {
  const std::string good = bytesOf(files1_[0].type(), 1);
  const struct {
    std::string bytes;
    Reason reason;
    std::int64_t offset;  // Of the next writer.
  } cases[] = {{"", Reason::TooShort, 0},
               {good.substr(1), Reason::TooShort, kSize - 1},
               {good + "!", Reason::WrongContent, 0},
               {bytesOf(files1_[0].type(), 7), Reason::WrongContent, 0}};
  for (const auto& [bytes, reason, offset] : cases) {
    const auto update = store_->begin(1, files1_);
    const auto out = update->write(files1_[0]);
    out->restart();
    EXPECT_EQ(reason, reasonOf([&, &sent = bytes] { put(*out, sent); })) << bytes;
    EXPECT_EQ(Reason::Io, reasonOf([&] { out->write("!", 1); })) << "the writer is closed";
    open();
    EXPECT_EQ(offset, store_->begin(1, files1_)->write(files1_[0])->offset()) << bytes;
  }
}

TEST_F(ModelStoreTest, refusesBadArguments) {
  const std::string digest = files1_[0].sha256();
  const auto begin = [&](const ModelFile& last) {
    return [=] { store_->begin(1, {files1_[0], files1_[1], files1_[2], last}); };
  };
  const std::function<void()> calls[] = {
      [&] { ModelFile("t", -1, digest); },
      [&] { ModelFile("t", 1, digest + "0"); },
      [&] { ModelFile("t", 1, "g" + digest.substr(1)); },
      [&] { store_->begin(1, {}); },
      begin(files1_[2]),
      begin({"other", 1, digest}),
      begin({files1_[3].type(), 1, digest}),
      [&] { store_->files(1); },
      [&] { store_->activate(1); },
      [&] { store_->setMaxSizeBytes(-1); },
      [] { ModelStore::open("", kCapability, 1); },
      [] { ModelStore::open(std::string("a\0b", 3), kCapability, 1); },
      [] { ModelStore::open("/nowhere", kCapability, -1); },
  };
  for (std::size_t i = 0; i < std::size(calls); ++i) {
    EXPECT_THROW(calls[i](), std::invalid_argument) << i;
  }
  const std::string longest(180, 't');
  for (const auto& types : std::vector<std::vector<std::string>>{
           {}, {"t", "t"}, {"a/b"}, {".t"}, {longest + "t"}, std::vector<std::string>(65, "t")}) {
    EXPECT_THROW(Capability::of("C", types), std::invalid_argument) << types.size();
  }
  EXPECT_THROW(Capability::of("", {"t"}), std::invalid_argument);
  EXPECT_THROW(Capability::of("FACE_TRACKING", {"t"}), std::invalid_argument);
  EXPECT_EQ(Capability::of("C", {longest}), Capability::of("C", {longest}));
  EXPECT_EQ(ModelFile("t", 1, std::string(64, 'a')), ModelFile("t", 1, std::string(64, 'A')));
}

TEST_F(ModelStoreTest, hasOneUpdateAtATimeWithOneWriterPerFile) {
  disk_.failOnce("syncDirectory", "", EIO);
  EXPECT_EQ(Reason::Io, reasonOf([&] { store_->begin(1, files1_); }));
  const auto update = store_->begin(1, files1_);
  EXPECT_THROW(store_->begin(2, files2_), UsageError);
  const auto out = update->write(files1_[0]);
  EXPECT_THROW(update->write(files1_[0]), UsageError);
  update->close();
  EXPECT_THROW(out->write("!", 1), UsageError);
  store_->begin(2, files2_);
}

TEST_F(ModelStoreTest, keepsTheBytesOfACancelledUpdate) {
  const auto update = store_->begin(1, files1_);
  const auto out = update->write(files1_[0]);
  out->write(bytesOf(files1_[0].type(), 1).data(), kSize);
  update->cancel();
  EXPECT_THROW(out->write("!", 1), CancelledError);
  EXPECT_THROW(out->commit(), CancelledError);
  EXPECT_THROW(update->activate(), CancelledError);
  update->close();
  EXPECT_THAT(store_->begin(1, files1_)->missing(), SizeIs(3));
}

TEST_F(ModelStoreTest, undoesACommitThatTheTableCannotRecord) {
  const auto update = store_->begin(1, files1_);
  for (std::size_t i = 0; i < 3; ++i) {
    download(*update, files1_[i], 1);
  }
  disk_.failOnce("rename", ".versions", EIO);
  EXPECT_EQ(Reason::Io, reasonOf([&] { download(*update, files1_[3], 1); }));
  EXPECT_THAT(update->missing(), ElementsAre(files1_[3]));
  EXPECT_EQ(kSize, update->write(files1_[3])->offset());
}

TEST_F(ModelStoreTest, refusesRootsOfAnotherKind) {
  for (const char* lost : {"", "versioned_index", ".versions"}) {
    Image before = rootWithTwoVersions();
    before.erase(lost);
    *lost == '\0' ? 0u : before.erase(".store");
    SimulatedDisk disk(before);
    EXPECT_THROW(DiskFileStore::open(kRoot, 1, disk.environment()), std::invalid_argument);
    EXPECT_THROW(DiskModelStore::open(kRoot, Capability::segmentation(), 1, disk.environment()),
                 std::invalid_argument);
    EXPECT_EQ(before.size(), disk.now().size());
  }
}

TEST_F(ModelStoreTest, keepsAnyCapability) {
  SimulatedDisk disk({{"raw", "b"}, {"raw2", "aa"}});
  const auto openOwn = [&disk](const std::vector<std::string>& types) {
    return DiskModelStore::open(kRoot, Capability::of("own.thing", types), 100, disk.environment());
  };
  const std::vector<ModelFile> files = {fileOf("b.bin", "b"), fileOf("a.bin", "aa")};
  openOwn({"b.bin", "a.bin"})->begin(-1, files)->activate();
  EXPECT_EQ(files[0], openOwn({"b.bin", "a.bin"})->files(-1)[0].file);
  EXPECT_THROW(openOwn({"a.bin"}), std::invalid_argument);
}

TEST_F(ModelStoreTest, letsASoftErrorSinkCallOnlySnapshot) {
  reopenWith([&](Image& image) { image[".part-" + nameOf(files1_[0])] = std::string(kSize, '?'); });
  softerror::setSink({[](const softerror::Report&, void* data) {
                        auto& store = *static_cast<ModelStore*>(data);
                        store.snapshot();
                        EXPECT_THROW(store.close(), UsageError);
                        EXPECT_THROW(store.activate(1), UsageError);
                        ++SoftErrors::count;
                      },
                      store_.get()});
  store_->begin(1, files1_);
  EXPECT_EQ(1, SoftErrors::count);
}

TEST_F(ModelStoreTest, writesNoTableThatIsTooLargeToRead) {
  std::vector<std::string> types;
  Version version{1, {}};
  for (int i = 0; i < 64; ++i) {
    types.push_back(std::string(170, 't') + std::to_string(i));
    version.files.push_back({{types.back(), 1, sha256("x")}, types.back()});
  }
  VersionTable table{Capability::of("large", types)};
  table.versions.assign(700, std::make_shared<const Version>(version));
  EXPECT_EQ(Reason::NoRoom, reasonOf([&] { VersionTableFile::print({table, {}}); }));
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
