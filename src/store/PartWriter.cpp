#include "store/PartWriter.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <utility>
#include <vector>

#include "store/StoreError.h"
#include "store/fileTrees.h"
#include "store/noRoom.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {

PartWriter::PartWriter(std::shared_ptr<StoreRoot> root, PartPlan plan)
    : root_(std::move(root)), plan_(std::move(plan)) {}

void PartWriter::activate(const std::shared_ptr<PartWriter>& writer) {
  // Without its lock, which comes before the root's: no other thread knows the writer yet.
  writer->isActive_ = true;
  writer->root_->writers().add(writer->plan_.entry, writer->plan_.part, writer);
}

PartHandle::PartHandle(std::shared_ptr<StoreRoot> root, PartPlan plan)
    : writer_(std::make_shared<PartWriter>(std::move(root), std::move(plan))) {
  PartWriter::activate(writer_);
}

PartHandle::~PartHandle() {
  const StoreCall call(writer_->root(), std::nothrow);
  writer_->closeNow();
}

std::int64_t PartWriter::offset() const {
  root_->requireOpen();
  const std::lock_guard<std::mutex> guard(mutex_);
  return size_;
}

void PartWriter::write(const void* bytes, std::size_t count) {
  const StoreCall call(*root_);
  const std::lock_guard<std::mutex> guard(mutex_);
  requireUsable();
  try {
    requireRoom(count);
    file_->append(bytes, count);
    if (digest_) {
      digest_->update(bytes, count);
    }
  } catch (...) {
    closePart(false);  // How much was written is unknown, so no more can be.
    throw;
  }
  size_ += static_cast<std::int64_t>(count);
}

void PartWriter::restart() {
  const StoreCall call(*root_);
  const std::lock_guard<std::mutex> guard(mutex_);
  requireUsable();
  try {
    file_->truncate();
    digest_ = plan_.expected ? root_->newDigest() : nullptr;
  } catch (...) {
    closePart(false);
    throw;
  }
  isVerified_ = false;
  size_ = 0;
}

void PartWriter::commit() {
  const StoreCall call(*root_);
  const std::lock_guard<std::mutex> guard(mutex_);
  requireUsable();
  try {
    check();
    syncPart();
    requireUnchanged();
    plan_.owner->requireRunning();
    plan_.owner->place(plan_, size_);
  } catch (...) {
    closePart(false);
    throw;
  }
  closePart(true);
}

void PartWriter::close() {
  const StoreCall call(*root_);
  closeNow();
}

void PartWriter::closeNow() noexcept {
  const std::lock_guard<std::mutex> guard(mutex_);
  closePart(false);
}

void PartWriter::resume() {
  const std::lock_guard<std::mutex> guard(mutex_);
  if (isActive_ && !(plan_.expected && openExisting())) {  // Inactive if closed meanwhile.
    openFresh();
  }
}

/// Reads what an earlier writer wrote. Returns false if it cannot be resumed.
bool PartWriter::openExisting() {
  IDirectory& directory = root_->directory();
  const FileStatus found = directory.status(plan_.part);
  if (!found.isOwn() || found.size > plan_.expected->sizeBytes) {
    return false;
  }
  try {
    auto file = directory.openForAppending(plan_.part);
    opened_ = file->status();
    if (!opened_.isUnchangedSince(found)) {
      return false;
    }
    auto digest = root_->newDigest();
    size_ = found.size == 0 ? 0 : digestPart(*digest);
    isVerified_ = size_ == plan_.expected->sizeBytes;
    if (size_ != found.size || (isVerified_ && digest->finish() != plan_.expected->sha256)) {
      return false;
    }
    digest_ = isVerified_ ? nullptr : std::move(digest);
    file_ = std::move(file);
    return true;
  } catch (const StoreError& error) {
    if (error.error() != EIO) {
      throw;
    }
    return false;  // A bad sector, so start over in a new file.
  }
}

/// Hashes the part that is open for writing. Returns its size, or -1 if it was replaced.
std::int64_t PartWriter::digestPart(Digest& digest) {
  const auto written = root_->directory().openForReading(plan_.part);
  if (!written->status().isSameFile(opened_)) {
    return -1;
  }
  return digestFile(*written, digest, [this] {
    root_->requireOpen();
    plan_.owner->requireRunning();
  });
}

void PartWriter::openFresh() {
  file_ = createFresh(root_->directory(), plan_.part);
  if (plan_.isNameSynced) {
    root_->directory().sync();
  }
  opened_ = file_->status();
  digest_ = plan_.expected ? root_->newDigest() : nullptr;
  isVerified_ = false;
  size_ = 0;
}

void PartWriter::requireUsable() const {
  root_->requireOpen();
  plan_.owner->requireRunning();
  if (!file_) {
    throw StoreError(StoreError::Reason::Io, "the writer is closed: " + root_->pathOf(plan_.part),
                     root_->pathOf(plan_.part));
  }
}

/// Throws if `count` more bytes exceed the known content, in which case it drops the part, or the
/// budget.
void PartWriter::requireRoom(std::size_t count) {
  const std::int64_t most =
      plan_.expected ? plan_.expected->sizeBytes : std::int64_t{root_->maxSizeBytes()};
  const auto added = static_cast<std::int64_t>(std::min<std::uint64_t>(count, INT64_MAX));
  const std::int64_t total = addSizes(size_, added);
  if (total <= most) {
    return;
  }
  const std::string path = root_->pathOf(plan_.part);
  if (plan_.expected) {
    throwDropped(joined(plan_.expected->what, " has ", total, " or more bytes instead of ", most));
  }
  throw noRoom(joined("exceeds the whole budget of ", most, " bytes: ", path), path,
               root_->directory(), total, most);
}

/// Throws if known content is incomplete or wrong, and drops it if wrong.
void PartWriter::check() {
  if (!plan_.expected || isVerified_) {
    return;
  }
  const auto& [what, sizeBytes, sha256] = *plan_.expected;
  if (size_ < sizeBytes) {
    throw StoreError(
        StoreError::Reason::TooShort,
        joined(what, " has ", size_, " bytes instead of ", sizeBytes, ": kept for resuming"),
        root_->pathOf(plan_.part));
  }
  const std::string digest = digest_->finish();
  if (digest != sha256) {
    throwDropped(joined(what, " has the digest ", digest, " instead of ", sha256));
  }
}

void PartWriter::throwDropped(const std::string& wrong) {
  file_->truncate();
  throw StoreError(StoreError::Reason::WrongContent, wrong + ": dropped",
                   root_->pathOf(plan_.part));
}

/// Deletes the part if that fails: the data may be lost even if a second fsync succeeds.
void PartWriter::syncPart() {
  try {
    file_->sync();
  } catch (...) {
    try {
      root_->directory().remove(plan_.part);
    } catch (const StoreError& error) {
      root_->report(error.what());
    }
    throw;
  }
}

void PartWriter::requireUnchanged() {
  const FileStatus found = root_->directory().status(plan_.part);
  if (!found.isOwn() || !found.isSameFile(opened_) || found.size != size_) {
    const std::string path = root_->pathOf(plan_.part);
    throw StoreError(StoreError::Reason::Io, path + " was changed by someone else", path);
  }
}

void PartWriter::closePart(bool isPlaced) noexcept {
  const bool wasOpen = std::exchange(file_, nullptr) != nullptr;
  if (wasOpen && !isPlaced && !plan_.expected && !root_->isForked()) {
    try {
      root_->directory().remove(plan_.part);
    } catch (const std::exception& error) {
      root_->report(error.what());  // The next store deletes it.
    }
  }
  if (std::exchange(isActive_, false)) {
    root_->writers().remove(plan_.entry);
  }
}

std::int64_t digestFile(IFile& file, Digest& digest, FunctionRef<void()> checkpoint) {
  std::vector<unsigned char> buffer(std::size_t{1} << 18);
  std::int64_t total = 0;
  for (std::size_t count = buffer.size(); count == buffer.size();) {
    checkpoint();
    count = file.read(buffer.data(), buffer.size());
    digest.update(buffer.data(), count);
    total += static_cast<std::int64_t>(count);
  }
  return total;
}

}  // namespace zentrel::vistabase::ardelivery
