// modelcache_store_fixture ROOT [VERSION:BYTES,BYTES]... [hold]: creates a store of segmentation
// models with these versions, the last one active, and a store of two files at ROOT.files. With
// "hold", begins an update, writes part of a file, says so, and waits for input or to be killed.

#include <cstdio>
#include <iostream>

#include "modelcache/modelcache.h"
#include "store/OpenSslDigest.h"

using namespace zentrel::vistabase::ardelivery;

namespace {

ModelFile fileOf(std::size_t type, const std::string& bytes) {
  const auto digest = newOpenSslDigest();
  digest->update(bytes.data(), bytes.size());
  return {Capability::segmentation().types()[type], static_cast<std::int64_t>(bytes.size()),
          digest->finish()};
}

void write(EntryWriter& writer, const std::string& bytes) {
  writer.write(bytes.data(), bytes.size());
  writer.commit();
}

}  // namespace

int main(int count, char** arguments) {
  const auto files = FileStore::open(std::string(arguments[1]) + ".files", 1000);
  write(*files->write("a"), "abc");
  write(*files->write("b"), "abc");
  const auto store = ModelStore::open(arguments[1], Capability::segmentation(), 1000);
  for (int i = 2; i < count; ++i) {
    int version = 0;
    char first[10], second[10];
    if (std::sscanf(arguments[i], "%d:%9[^,],%9s", &version, first, second) == 3) {
      const auto update = store->begin(version, {fileOf(0, first), fileOf(1, second)});
      for (const ModelFile& file : update->missing()) {
        write(*update->write(file), file == fileOf(0, first) ? first : second);
      }
      update->activate();
    } else {
      const auto update = store->begin(99, {fileOf(0, "never"), fileOf(1, "ended")});
      const auto writer = update->write(update->missing().front());
      writer->write("ne", 2);
      std::cout << "ready" << std::endl;
      std::cin.get();
    }
  }
}
