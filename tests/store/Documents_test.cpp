// What README shows in C++ is compiled and run as it stands there.

#include "modelcache/modelcache.h"
#include "tests/cpp/TemporaryDirectory.h"
#include "tests/store/Samples.h"

namespace zentrel::vistabase::ardelivery {
namespace {

void download(const ModelFile& file, std::int64_t offset, EntryWriter& out) {
  const std::string rest =
      samples::bytesOf(file.type(), 7).substr(static_cast<std::size_t>(offset));
  out.write(rest.data(), rest.size());
}

TEST(Documents, readmeActivatesAVersion) {
  const TemporaryDirectory directory;
  const std::string root = directory / "root";
  const std::vector<ModelFile> files = samples::filesOf(7);
#include "README.inc"
  EXPECT_EQ(7, ModelStore::open(root, Capability::faceTracking(), 50'000'000)->snapshot()->active);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
