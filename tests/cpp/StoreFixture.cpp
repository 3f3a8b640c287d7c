// modelcache_store_fixture ROOT [VERSION:BYTES,BYTES]... [hold]: a store of segmentation models
// with these versions, the last one active. With "hold", it goes on with an update that has written
// a part of a file, says so, and waits to be ended or killed. ROOT.files is a store of two files.

#include <cstdlib>
#include <iostream>
#include <sstream>

#include "modelcache/modelcache.h"
#include "store/OpenSslDigest.h"

using namespace zentrel::vistabase::ardelivery;

namespace {

std::unique_ptr<Update> begin(ModelStore& store, int version,
                              const std::vector<std::string>& bytes) {
  std::vector<ModelFile> files;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto digest = newOpenSslDigest();
    digest->update(bytes[i].data(), bytes[i].size());
    files.emplace_back(Capability::segmentation().types()[i],
                       static_cast<std::int64_t>(bytes[i].size()), digest->finish());
  }
  return store.begin(version, files);
}

void add(ModelStore& store, int version, const std::vector<std::string>& bytes) {
  const auto update = begin(store, version, bytes);
  for (const ModelFile& file : update->missing()) {
    const bool isFirst = file.type() == Capability::segmentation().types()[0];
    const auto writer = update->write(file);
    writer->write(bytes[isFirst ? 0 : 1].data(), bytes[isFirst ? 0 : 1].size());
    writer->commit();
  }
  update->activate();
}

}  // namespace

int main(int count, char** arguments) {
  const auto files = FileStore::open(std::string(arguments[1]) + ".files", 1000);
  for (const char* const key : {"a", "b"}) {
    const auto writer = files->write(key);
    writer->write("abc", 3);
    writer->commit();
  }
  const auto store = ModelStore::open(arguments[1], Capability::segmentation(), 1000);
  for (int i = 2; i < count; ++i) {
    std::istringstream words(arguments[i]);
    int version = 0;
    std::string first, second;
    if (words >> version && words.get() == ':' && std::getline(words, first, ',') &&
        words >> second) {
      add(*store, version, {first, second});
      continue;
    }
    const auto update = begin(*store, 99, {"never", "ended"});
    const auto writer = update->write(update->missing().front());
    writer->write("ne", 2);
    std::cout << "ready" << std::endl;
    std::cin.get();
  }
  return EXIT_SUCCESS;
}
