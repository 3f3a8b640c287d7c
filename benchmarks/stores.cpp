// stores calls FOLDER: what stores do to the disk, to be run under strace: between two calls of
// access(2), one for "begin/NAME/ENTRIES" and one for "end".
//
// stores bulk FOLDER: times the commit and the verification of a large file, and what hashing and
// writing alone take. Prints lines of NAME, store or floor, and nanoseconds, the least of some
// rounds.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <iostream>
#include <map>

#include "store/FileStore.h"
#include "store/ModelStore.h"
#include "store/OpenSslDigest.h"

namespace {

using namespace zentrel::vistabase::ardelivery;

constexpr std::int64_t kBudget = std::int64_t{1} << 30;

std::string sha256(const std::string& bytes) {
  const auto digest = newOpenSslDigest();
  digest->update(bytes.data(), bytes.size());
  return digest->finish();
}

std::string bytesOf(const std::string& type, int version) {
  return type + std::to_string(version);
}

void update(ModelStore& store, int version) {
  std::vector<ModelFile> files;
  for (const std::string& type : Capability::faceTracking().types()) {
    const std::string bytes = bytesOf(type, version);
    files.emplace_back(type, static_cast<std::int64_t>(bytes.size()), sha256(bytes));
  }
  const auto update = store.begin(version, files);
  for (const ModelFile& file : update->missing()) {
    const auto out = update->write(file);
    const std::string bytes = bytesOf(file.type(), version);
    out->write(bytes.data(), bytes.size());
    out->commit();
  }
  update->activate();
}

void put(FileStore& store, const std::string& key) {
  const auto out = store.write(key);
  out->write("x", 1);
  out->commit();
}

void region(const std::string& name, int entries, const std::function<void()>& call) {
  ::access(("begin/" + name + "/" + std::to_string(entries)).c_str(), F_OK);
  call();
  ::access("end", F_OK);
}

void calls(const std::string& folder) {
  const auto models = ModelStore::open(folder + "/models", Capability::faceTracking(), kBudget);
  update(*models, 0);
  region("update of four new files", 1, [&] { update(*models, 1); });
  for (const int versions : {2, 200}) {
    for (int version = 2; version < versions; ++version) {
      update(*models, version);
    }
    region("activate an older version", versions, [&] { models->activate(0); });
  }
  const auto files = FileStore::open(folder + "/files", kBudget);
  int count = 0;
  for (const int entries : {10, 10'000}) {
    for (; count < entries; ++count) {
      put(*files, std::to_string(count));
    }
    region("FileStore commit", entries, [&] { put(*files, "new"); });
    region("get, hit", entries, [&] { files->get("5"); });
    region("get, miss", entries, [&] { files->get("none"); });
    files->remove("new");
  }
}

/// The least of some rounds.
void print(const char* name, const char* what, const std::function<void()>& call) {
  using Clock = std::chrono::steady_clock;
  std::chrono::nanoseconds least = std::chrono::nanoseconds::max();
  for (int round = 0; round < 7; ++round) {
    const auto start = Clock::now();
    call();
    least = std::min<std::chrono::nanoseconds>(least, Clock::now() - start);
  }
  std::cout << "bulk\t" << name << '\t' << what << '\t' << least.count() << '\n';
}

void bulk(const std::string& folder) {
  const std::string bytes(50'000'000, 'b');
  const Capability one = Capability::of("one", {"model"});
  const ModelFile file("model", static_cast<std::int64_t>(bytes.size()), sha256(bytes));
  const auto store = ModelStore::open(folder + "/bulk", one, kBudget);
  print("commit of 50 MB", "store", [&] {
    store->deactivate();
    store->trimExcept({});
    const auto update = store->begin(1, {file});
    for (const ModelFile& missing : update->missing()) {
      const auto out = update->write(missing);
      out->write(bytes.data(), bytes.size());
      out->commit();
    }
    update->close();
    ::unlink(store->files(1)[0].path.c_str());
  });
  const std::string path = folder + "/floor";
  const auto write = [&] {
    const int written = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    static_cast<void>(!::write(written, bytes.data(), bytes.size()));
    ::fsync(written);
    ::close(written);
  };
  print("commit of 50 MB", "floor", [&] {
    ::unlink(path.c_str());
    sha256(bytes);
    write();
  });
  const auto update = store->begin(1, {file});
  const auto out = update->write(file);
  out->write(bytes.data(), bytes.size());
  out->commit();
  print("verify of 50 MB", "store", [&] { store->verify(); });
  std::string buffer(std::size_t{1} << 18, '\0');
  print("verify of 50 MB", "floor", [&] {
    const auto digest = newOpenSslDigest();
    const int read = ::open(path.c_str(), O_RDONLY);
    for (ssize_t count = 0; (count = ::read(read, buffer.data(), buffer.size())) > 0;) {
      digest->update(buffer.data(), static_cast<std::size_t>(count));
    }
    ::close(read);
  });
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    return 2;
  }
  (std::strcmp(arguments[1], "calls") == 0 ? calls : bulk)(arguments[2]);
}
