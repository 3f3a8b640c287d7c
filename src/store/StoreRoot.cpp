#include "store/StoreRoot.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "delivery/FileNames.h"
#include "platform/softerror/softerror.h"
#include "store/CheckedDocument.h"
#include "store/StoreError.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {
namespace {

/// Strips trailing slashes.
std::string checkedPath(std::string path) {
  if (path.empty() || path.find('\0') != std::string::npos) {
    throw std::invalid_argument(path.empty() ? "the path of the root is empty"
                                             : "the path of the root contains a zero byte");
  }
  while (path.size() > 1 && path.back() == '/') {
    path.pop_back();
  }
  return path;
}

void printReport(const std::string& message, const char* function) noexcept {
  softerror::printSoftError("store", function, 0, softerror::Severity::Recoverable, "modelcache",
                            "%s", message.c_str());
}

std::int64_t checkedBudget(std::int64_t bytes) {
  if (bytes < 0) {
    throw std::invalid_argument(joined("negative budget: ", bytes));
  }
  return bytes;
}

}  // namespace

StoreRoot::StoreRoot(const std::string& path, std::int64_t maxSizeBytes,
                     const StoreEnvironment& environment)
    : path_(checkedPath(path)),
      directory_((checkedBudget(maxSizeBytes), environment.openRoot(path_))),
      newDigest_(environment.newDigest),
      maxSizeBytes_(maxSizeBytes),
      lock_(std::in_place, directory_, path_) {}

void StoreRoot::setMaxSizeBytes(std::int64_t bytes) {
  maxSizeBytes_ = checkedBudget(bytes);
}

bool StoreRoot::readOwnFile(const char* name, FunctionRef<void()> read) {
  try {
    read();
    return true;
  } catch (const NewerDocument& error) {
    throw std::invalid_argument(pathOf(name) + " was " + error.what());
  } catch (const StoreError& error) {
    if (error.isShortage()) {
      throw;
    }
    report(std::string(name) + " is damaged: " + error.what());
  } catch (const json::Error& error) {
    report(std::string(name) + " is damaged: " + error.cause());
  }
  return false;
}

std::optional<RootContent> StoreRoot::findContent() {
  std::optional<RootContent> found;
  readOwnFile(kMarkerName, [&] { found = RootMarker::read(*directory_); });
  isMarked_ = found.has_value();
  return found ? found : identifyRoot(*directory_);
}

void StoreRoot::claim(const RootContent& content) {
  const std::optional<RootContent> found = findContent();
  if (found && !found->isCompatibleWith(content)) {
    throw std::invalid_argument(path_ + " holds " + found->toString() + ", not " +
                                content.toString());
  }
  content_ = content;
  lock_->recordHolder();
  try {
    ensureMarked();
  } catch (const StoreError& error) {
    report(error.what());  // It is written before the first change instead.
  }
}

void StoreRoot::ensureMarked() {
  if (!isMarked_) {
    RootMarker::write(*directory_, content_);
    isMarked_ = true;
  }
}

std::unique_lock<std::mutex> StoreRoot::lock() {
  std::unique_lock<std::mutex> lock(contentsMutex_);
  requireOpen();
  return lock;
}

std::unique_lock<std::mutex> StoreRoot::lockForChange() {
  std::unique_lock<std::mutex> lock = this->lock();
  ensureMarked();
  return lock;
}

void StoreRoot::requireOpen() const {
  if (closed_) {
    throw UsageError("the store is closed: " + path_);
  }
}

void StoreRoot::report(const std::string& message, const char* function) noexcept {
  try {
    const std::lock_guard<std::mutex> guard(callsMutex_);
    for (const auto& [thread, call] : calls_) {
      if (thread == std::this_thread::get_id()) {
        call->reports_.emplace_back(path_ + ": " + message, function);
        return;
      }
    }
  } catch (const std::bad_alloc&) {
    // Report it right away instead.
  }
  printReport(message, function);
}

void StoreRoot::close() noexcept {
  const std::lock_guard<std::mutex> closing(closeMutex_);
  {
    const std::lock_guard<std::mutex> lock(contentsMutex_);
    closed_ = true;
  }
  writers_.closeAll();
  lock_.reset();
}

StoreCall::StoreCall(StoreRoot& root) : root_(root) {
  const std::thread::id self = std::this_thread::get_id();
  const std::lock_guard<std::mutex> guard(root_.callsMutex_);
  for (const auto& [thread, call] : root_.calls_) {
    if (thread == self) {
      throw UsageError("called from inside another call of the store");
    }
  }
  root_.calls_.emplace_back(self, this);
}

StoreCall::StoreCall(StoreRoot& root, std::nothrow_t /*destructor*/) noexcept : root_(root) {
  try {
    const std::lock_guard<std::mutex> guard(root_.callsMutex_);
    root_.calls_.emplace_back(std::this_thread::get_id(), this);
  } catch (const std::bad_alloc&) {
    // Reports are then delivered at once.
  }
}

StoreCall::~StoreCall() {
  for (const auto& [message, function] : reports_) {
    printReport(message, function);
  }
  const std::lock_guard<std::mutex> guard(root_.callsMutex_);
  auto& calls = root_.calls_;
  calls.erase(std::remove(calls.begin(), calls.end(), std::pair(std::this_thread::get_id(), this)),
              calls.end());
}

}  // namespace zentrel::vistabase::ardelivery
