// makeRoot ROOT ENTRIES: leaves a root with so many entries, four of them a version's models.

#include <string>

#include "benchmarks/Fixture.h"

int main(int argc, char** argv) {
  using zentrel::vistabase::ardelivery::bench::Fixture;
  if (argc != 3) {
    return 2;
  }
  // Never deleted, so that the files stay.
  (new Fixture(argv[1], std::stoul(argv[2])))->addVersion();
}
