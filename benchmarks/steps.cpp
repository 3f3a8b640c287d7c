// steps SIDE ROOT ENTRIES TIMES: makes each operation (SIDE is cache) or its floor (floor) so many
// times, or once if it deletes entries, between marks: an access to /begin/OPERATION and one to
// /end for strace; for callgrind, a dump called "TIMES OPERATION".

#include <unistd.h>
#include <valgrind/callgrind.h>

#include <string>

#include "benchmarks/Fixture.h"
#include "benchmarks/Operations.h"
#include "delivery/FileCache/createFileCache.h"

using namespace zentrel::vistabase::ardelivery;

namespace {

template <class Step>
void marked(const std::string& name, int times, const Step& step) {
  const std::string begin = "/begin/" + name;
  const std::string dump = std::to_string(times) + " " + name;
  (void)!::access(begin.c_str(), F_OK);
  CALLGRIND_ZERO_STATS;
  for (int i = 0; i < times; ++i) {
    step();
  }
  CALLGRIND_DUMP_STATS_AT(dump.c_str());
  (void)!::access("/end", F_OK);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    return 2;
  }
  const bool isFloor = std::string(argv[1]) == "floor";
  const bench::Fixture fixture(argv[2], std::stoul(argv[3]));
  const auto cache = createFileCache(fixture.root, fixture.budget);
  for (const bench::Operation& operation : bench::operations()) {
    if (!operation.fits(fixture.keys.size())) {
      continue;
    }
    const auto step = [&] { isFloor ? operation.floor(fixture) : operation.run(*cache, fixture); };
    fixture.restore();
    step();  // What happens only once, such as the binding of symbols, is not counted.
    fixture.restore();
    marked(operation.name, operation.deletes == 0 ? std::stoi(argv[4]) : 1, step);
  }
}
