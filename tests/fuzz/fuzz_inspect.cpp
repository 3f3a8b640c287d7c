// A hostile root: of the input's parts, which a byte FF ends, the first four are the own files of
// caches and stores (the checksums of a store's are put right), and each other one is the name of
// an entry. Whatever lies there, the report is narrow, steers no terminal, and is JSON for scripts;
// only what a newer release has written is refused. Nothing is changed.

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/operations.hpp>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

#include "store/CheckedDocument.h"
#include "support/json/JsonValue.h"
#include "tools/inspect/inspect.h"

using namespace zentrel::vistabase::ardelivery;
namespace fs = boost::filesystem;

namespace {

std::string withChecksum(const std::string& text) {
  const std::string begin = text.substr(0, text.rfind('}'));
  return begin + ",\"crc32\":" + std::to_string(crc32(begin)) + '}';
}

std::set<std::string> namesIn(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& each : fs::directory_iterator(folder)) {
    names.insert(each.path().string());
  }
  return names;
}

void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const fs::path root = fs::temp_directory_path() / fs::unique_path();
  fs::create_directories(root / "extra");
  std::istringstream input(std::string(data, data + size));
  const char* const own[] = {"metadata.json", "versioned_index", ".versions", ".store"};
  std::size_t count = 0;
  for (std::string part; std::getline(input, part, '\xFF'); ++count) {
    const std::string name =
        count < 4 ? own[count] : part.substr(0, part.find_first_of(std::string("/\0", 2)));
    std::ofstream((root / name).string()) << (count == 2 || count == 3 ? withChecksum(part) : part);
  }
  inspect::Options options;
  options.budget = 0;
  options.verify = true;
  const std::set<std::string> names = namesIn(root);
  try {
    const inspect::Report report = inspect::inspect(root.string(), options);
    json::parse(inspect::toJson(report));
    std::istringstream lines(inspect::toText(report, 60));
    for (std::string line; std::getline(lines, line);) {
      require(inspect::columns(line) <= 60);
      require(inspect::printable(line) == line);
    }
  } catch (const std::invalid_argument& error) {
    require(std::string(error.what()).find("newer release") != std::string::npos);
  }
  require(namesIn(root) == names);
  fs::remove_all(root);
  return 0;
}
