#include <gtest/gtest.h>

#include "delivery/FileCache/ICacheMetadata.h"
#include "delivery/Storage/IFilesystemOperations.h"
#include "support/util/memory/shared_ref.h"
#include "support/util/memory/unique_ref.h"
#include "tests/cpp/Errors.h"

namespace {

using namespace zentrel::vistabase::ardelivery;

TEST(References, reportEachAccessToNullInTheSameWordsWithEveryCompiler) {
  SoftErrorRecorder recorder;
  const quovix::shared_ref<IFilesystemOperations> shared(std::shared_ptr<IFilesystemOperations>{});
  EXPECT_EQ(nullptr, shared.get());
  EXPECT_EQ(nullptr, shared.operator->());
  const quovix::unique_ref<ICacheMetadata> unique(std::unique_ptr<ICacheMetadata>{});
  EXPECT_EQ(nullptr, unique.get());

  const auto records = recorder.take();
  ASSERT_EQ(3u, records.size());
  const std::string filesystem = "zentrel::vistabase::ardelivery::IFilesystemOperations";
  EXPECT_EQ(
      "void quovix::shared_ref<" + filesystem + ">::invariant_() const [T = " + filesystem + "]",
      records[1].function);
  EXPECT_EQ("support/util/memory/shared_ref", records[1].file);
  EXPECT_EQ("Assert triggered on line: 150, in file: support/util/memory/shared_ref",
            records[1].message);
  const std::string metadata = "zentrel::vistabase::ardelivery::ICacheMetadata";
  const std::string deleter = "std::default_delete<" + metadata + ">";
  EXPECT_EQ("void quovix::unique_ref<" + metadata + ", " + deleter +
                " >::invariant_() const [T = " + metadata + ", D = " + deleter + "]",
            records[2].function);
  EXPECT_EQ("Assert triggered on line: %d, in file: %s", records[2].format);
  EXPECT_EQ(126, records[2].line);
  EXPECT_EQ("2 AREngine", std::to_string(records[2].severity) + " " + records[2].category);
}

TEST(References, reportOnlyTheUseOfMovedFromReferences) {
  SoftErrorRecorder recorder;
  auto first = quovix::make_unique_ref<int>(1);
  auto second = std::move(first);
  quovix::shared_ref<const int> shared = std::make_unique<int>(2);
  const auto copy = shared;
  shared = quovix::make_shared_ref<int>(3);
  EXPECT_EQ(6, *second + *shared + *copy);
  EXPECT_EQ(0u, recorder.take().size());
  EXPECT_EQ(nullptr, first.get());
  EXPECT_EQ(1u, recorder.take().size());
  second = std::move(first);
  EXPECT_EQ(1u, recorder.take().size());
}

}  // namespace
