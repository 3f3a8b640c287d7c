// Values beyond 32 bits, which matter most on 32-bit targets.
#include <gmock/gmock.h>

#include "delivery/FileCache/createFileCache.h"
#include "tests/cpp/SoftErrorRecorder.h"
#include "tests/cpp/TemporaryDirectory.h"

namespace zentrel::vistabase::ardelivery {
namespace {

TEST(Wide, sizesTotalsAndTimesAreExact) {
  const TemporaryDirectory root;
  SoftErrorRecorder errors;
  const auto writeSparse = [&root](const std::string& name, std::uintmax_t size) {
    root.write(name, "");
    boost::filesystem::resize_file(root / name, size);
  };
  // Cut to 32 bits, the younger one would be the older, and the total within the budget.
  root.write("metadata.json", R"({"entries":[{"key":"old","size":5000000000,"lastAccess":5},)"
                              R"({"key":"young","size":5000000000,"lastAccess":4294967297}]})");
  writeSparse("old", 5'000'000'000);
  writeSparse("young", 5'000'000'000);
  const auto cache = createFileCache(root.path(), 12'000'000'000);
  EXPECT_EQ(10'000'000'000, cache->getSize());
  writeSparse("directory/new", 4'500'000'000);
  EXPECT_NE(nullptr, cache->getCacheEntry("directory"));
  cache->commit("directory");
  EXPECT_FALSE(root.has("old"));
  EXPECT_EQ(9'500'000'000, cache->getSize());
  EXPECT_THAT(root.read("metadata.json"),
              testing::HasSubstr("5000000000,\"lastAccess\":4294967297"));
  EXPECT_THAT(errors.takeMessages(), testing::IsEmpty());
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
