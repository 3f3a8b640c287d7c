#pragma once

#include "delivery/Storage/FileIO.h"
#include "delivery/Storage/FilesystemOperations.h"
#include "tests/cpp/Mocks.h"

namespace zentrel::vistabase::ardelivery {

/// Makes the N-th call that passes it throw: that one alone, or all from there on.
struct FaultPlan {
  int callsLeft = 0;
  bool fromThereOn = false;
  int fired = 0;

  void pass() {
    --callsLeft;
    if (callsLeft == 0 || (fromThereOn && callsLeft < 0)) {
      ++fired;
      throw std::runtime_error("injected");
    }
  }
};

/// Storage that works, except as planned.
struct FaultyFilesystem : IFilesystemOperations {
  explicit FaultyFilesystem(FaultPlan& p) : plan(p) {}
  bool isFile(const Path& path) override { return plan.pass(), real.isFile(path); }
  bool createDirectories(const Path& path) override {
    return plan.pass(), real.createDirectories(path);
  }
  bool exists(const Path& path) override { return plan.pass(), real.exists(path); }
  bool remove(const Path& path) override { return plan.pass(), real.remove(path); }
  bool removeAll(const Path& path) override { return plan.pass(), real.removeAll(path); }
  std::uint64_t getSize(const Path& path) override { return plan.pass(), real.getSize(path); }
  Names listDirectory(const Path& path) override { return plan.pass(), real.listDirectory(path); }
  FaultPlan& plan;
  FilesystemOperations real;
};

struct FaultyFileIO : IFileIO {
  explicit FaultyFileIO(FaultPlan& p) : plan(p) {}
  std::string readFile(const std::string& path) override {
    return plan.pass(), real.readFile(path);
  }
  void writeFile(const std::string& path, const std::string& content) override {
    plan.pass();
    real.writeFile(path, content);
  }
  void moveFile(const std::string& from, const std::string& to) override {
    plan.pass();
    real.moveFile(from, to);
  }
  FaultPlan& plan;
  FileIO real;
};

}  // namespace zentrel::vistabase::ardelivery
