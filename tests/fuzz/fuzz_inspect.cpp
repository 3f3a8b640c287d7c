// A hostile root: of the input's parts, which a byte FF ends, the first three are the cache's own
// files (the checksum of a store's table is put right), and each other one is the name of an entry.
// Whatever lies there, the report is narrow, steers no terminal, and is JSON for scripts.

#include <boost/crc.hpp>
#include <boost/filesystem/operations.hpp>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "support/json/JsonValue.h"
#include "tools/inspect/inspect.h"

using namespace zentrel::vistabase::ardelivery;
namespace fs = boost::filesystem;

namespace {

std::string withChecksum(const std::string& table) {
  boost::crc_32_type sum;
  sum.process_bytes(table.data(), table.size());
  std::ostringstream text;
  text << table << "check " << std::hex << sum.checksum() << '\n';
  return text.str();
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
  const char* const own[] = {"metadata.json", "versioned_index", ".versions"};
  std::size_t count = 0;
  for (std::string part; std::getline(input, part, '\xFF'); ++count) {
    const std::string name =
        count < 3 ? own[count] : part.substr(0, part.find_first_of(std::string("/\0", 2)));
    std::ofstream((root / name).string()) << (count == 2 ? withChecksum(part) : part);
  }
  inspect::Options options;
  options.budget = 0;
  options.verify = true;
  const inspect::Report report = inspect::inspect(root.string(), options);
  json::parse(inspect::toJson(report));
  std::istringstream lines(inspect::toText(report, 60));
  for (std::string line; std::getline(lines, line);) {
    require(inspect::columns(line) <= 60);
    require(inspect::printable(line) == line);
  }
  fs::remove_all(root);
  return 0;
}
