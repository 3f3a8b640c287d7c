#include <gtest/gtest.h>

#include "delivery/FileCache/ICacheMetadata.h"
#include "delivery/Storage/IFilesystemOperations.h"
#include "support/util/memory/shared_ref.h"
#include "support/util/memory/unique_ref.h"
#include "tests/cpp/SoftErrorRecorder.h"

namespace {

using zentrel::vistabase::ardelivery::ICacheMetadata;
using zentrel::vistabase::ardelivery::IFilesystemOperations;

TEST(References, reportEachAccessToNullAlikeUnderEveryCompiler) {
  const SoftErrorRecorder recorder;
  const quovix::shared_ref<IFilesystemOperations> shared(std::shared_ptr<IFilesystemOperations>{});
  EXPECT_EQ(nullptr, shared.get());
  EXPECT_EQ(nullptr, shared.operator->());
  const quovix::unique_ref<ICacheMetadata> unique(std::unique_ptr<ICacheMetadata>{});
  EXPECT_EQ(nullptr, unique.get());

  const auto& records = SoftErrorRecorder::records();
  ASSERT_EQ(3u, records.size());
  EXPECT_EQ(
      "void "
      "quovix::shared_ref<zentrel::vistabase::ardelivery::IFilesystemOperations>::invariant_() "
      "const [T = zentrel::vistabase::ardelivery::IFilesystemOperations]",
      records[1].function);
  EXPECT_EQ("support/util/memory/shared_ref", records[1].file);
  EXPECT_EQ("Assert triggered on line: 150, in file: support/util/memory/shared_ref",
            records[1].message);
  EXPECT_EQ(
      "void quovix::unique_ref<zentrel::vistabase::ardelivery::ICacheMetadata, "
      "std::default_delete<zentrel::vistabase::ardelivery::ICacheMetadata> >::invariant_() const "
      "[T = zentrel::vistabase::ardelivery::ICacheMetadata, "
      "D = std::default_delete<zentrel::vistabase::ardelivery::ICacheMetadata>]",
      records[2].function);
  EXPECT_EQ("Assert triggered on line: %d, in file: %s", records[2].format);
  EXPECT_EQ(126, records[2].line);
  EXPECT_EQ(2, records[2].severity);
  EXPECT_EQ("AREngine", records[2].category);
}

TEST(References, reportOnlyTheUseOfMovedFromReferences) {
  const SoftErrorRecorder recorder;
  auto first = quovix::make_unique_ref<int>(1);
  auto second = std::move(first);
  EXPECT_EQ(1, *second);
  quovix::shared_ref<const int> shared = std::make_unique<int>(2);
  const auto copy = shared;
  shared = quovix::make_shared_ref<int>(3);
  EXPECT_EQ(5, *shared + *copy);
  EXPECT_TRUE(SoftErrorRecorder::records().empty());

  EXPECT_EQ(nullptr, first.get());
  EXPECT_EQ(1u, SoftErrorRecorder::records().size());
  second = std::move(first);
  EXPECT_EQ(2u, SoftErrorRecorder::records().size());
}

}  // namespace
