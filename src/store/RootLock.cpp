#include "store/RootLock.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "delivery/FileNames.h"
#include "delivery/Storage/FileIO.h"
#include "store/StoreError.h"
#include "store/fileTrees.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Identity = std::pair<std::uint64_t, std::uint64_t>;

/// The roots open in this process, with the names of the threads that opened them.
struct Registry {
  std::mutex mutex;
  std::map<Identity, std::string> openers;
};

Registry& registry() {
  static Registry& registry = *new Registry;  // Stores may be closed during exit.
  return registry;
}

std::string nameOfThread() {
  char name[16] = "";
  return ::prctl(PR_GET_NAME, name) == 0 ? name : "";
}

[[noreturn]] void throwInUse(const std::string& path, const std::string& holder) {
  throw StoreError(StoreError::Reason::InUse, path + " has a store in " + holder, path);
}

/// Retries once, since `findHolder` in another process holds the lock for an instant.
bool tryLockTwice(IDirectory& root) {
  if (root.tryLock()) {
    return true;
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(5));
  return root.tryLock();
}

}  // namespace

RootClaim::RootClaim(const FileStatus& root, const std::string& path)
    : identity_(root.device, root.inode) {
  Registry& known = registry();
  const std::lock_guard<std::mutex> guard(known.mutex);
  const auto [opener, isNew] = known.openers.emplace(identity_, nameOfThread());
  if (!isNew) {
    throwInUse(path, "this process already, opened by the thread \"" + opener->second + "\"");
  }
}

RootClaim::~RootClaim() {
  Registry& known = registry();
  const std::lock_guard<std::mutex> guard(known.mutex);
  known.openers.erase(identity_);
}

RootLock::RootLock(std::shared_ptr<IDirectory> root, const std::string& path)
    : root_(std::move(root)), claim_(root_->status(), path), process_(::getpid()) {
  if (!tryLockTwice(*root_)) {
    throwInUse(path, describeHolder(*root_));
  }
}

void RootLock::recordHolder() {
  try {
    removeTree(*root_, kLockName);
    const auto file = root_->create(kLockName);
    const std::string process = joined(::getpid(), "\n");
    file->append(process.data(), process.size());
  } catch (const StoreError&) {
    // A read-only or full disk.
  }
}

RootLock::~RootLock() {
  if (isHere()) {
    root_->unlock();
  }
}

bool RootLock::isHere() const noexcept {
  return ::getpid() == process_;
}

std::string describeHolder(IDirectory& root) {
  try {
    std::string process = readSmallFile(root, kLockName).value_or("");
    process.erase(std::find(process.begin(), process.end(), '\n'), process.end());
    if (process.empty() || process.find_first_not_of("0123456789") != std::string::npos) {
      return "another process";
    }
    const std::string command = FileIO().readFile("/proc/" + process + "/cmdline");
    // Empty if the process is exiting.
    return joined("the process ", process,
                  command.empty() ? "" : joined(" (", command.c_str(), ")"));
  } catch (const std::exception&) {
    return "another process";
  }
}

std::optional<std::string> findHolder(IDirectory& root) {
  if (!tryLockTwice(root)) {
    return describeHolder(root);
  }
  root.unlock();
  return std::nullopt;
}

}  // namespace zentrel::vistabase::ardelivery
