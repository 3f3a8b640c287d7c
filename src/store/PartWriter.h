#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "store/EntryWriter.h"
#include "store/StoreRoot.h"

namespace zentrel::vistabase::ardelivery {

/// The content that is known in advance.
struct ExpectedContent {
  std::string what;  ///< For messages.
  std::int64_t sizeBytes;
  std::string sha256;
};

struct PartPlan;

/// The owner of a part file, which a PartWriter reports to.
class PartOwner {
 public:
  virtual ~PartOwner() = default;

  /// Puts the part, `bytes` long and synced, in place as the entry.
  virtual void place(const PartPlan& part, std::int64_t bytes) = 0;
  /// Throws if the part is no longer wanted.
  virtual void requireRunning() const = 0;
};

/// What a PartWriter writes, and for whom.
struct PartPlan {
  std::shared_ptr<PartOwner> owner;
  std::string entry;                        ///< The name of the entry.
  std::string part;                         ///< The name of the part file.
  std::optional<ExpectedContent> expected;  ///< If set, closing the writer keeps the part.
  /// Whether to sync the name of a newly created part, so that the bytes kept survive a power cut.
  bool isNameSynced = false;
};

/// Writes the part file of one entry. Shared by its PartHandle and the root.
class PartWriter final : public EntryWriter {
 public:
  PartWriter(std::shared_ptr<StoreRoot> root, PartPlan plan);

  /// Registers it as its entry's only writer. Throws UsageError if there already is one.
  static void activate(const std::shared_ptr<PartWriter>& writer);
  /// Opens the part and hashes what an earlier writer left in it.
  void resume();

  std::int64_t offset() const override;
  void write(const void* bytes, std::size_t count) override;
  void restart() override;
  void commit() override;
  void close() override;

  /// Like `close`, for the root or the update that is closing it.
  void closeNow() noexcept;
  StoreRoot& root() const noexcept { return *root_; }

 private:
  bool openExisting();
  std::int64_t digestPart(Digest& digest);
  void openFresh();
  void requireUsable() const;
  void requireRoom(std::size_t count);
  void check();
  [[noreturn]] void throwDropped(const std::string& wrong);
  void syncPart();
  void requireUnchanged();
  void closePart(bool isPlaced) noexcept;

  const std::shared_ptr<StoreRoot> root_;
  const PartPlan plan_;

  mutable std::mutex mutex_;  // Taken before the root's.
  bool isActive_ = false;
  std::unique_ptr<IFile> file_;  // Null before it is opened and once closed.
  FileStatus opened_;
  std::unique_ptr<Digest> digest_;
  bool isVerified_ = false;  // The part is complete, with the right digest.
  std::int64_t size_ = 0;
};

/// The caller's handle to a PartWriter, which it closes when destroyed. Construct it with the
/// root's lock held, and call `resume` without.
class PartHandle final : public EntryWriter {
 public:
  PartHandle(std::shared_ptr<StoreRoot> root, PartPlan plan);
  PartHandle(const PartHandle&) = delete;
  PartHandle& operator=(const PartHandle&) = delete;
  ~PartHandle() override;

  void resume() { writer_->resume(); }

  std::int64_t offset() const override { return writer_->offset(); }
  void write(const void* bytes, std::size_t count) override { writer_->write(bytes, count); }
  void restart() override { writer_->restart(); }
  void commit() override { writer_->commit(); }
  void close() override { writer_->close(); }

 private:
  const std::shared_ptr<PartWriter> writer_;
};

/// Feeds the rest of a file to a digest. Calls `checkpoint`, which may throw, once per buffer.
/// Returns the number of bytes.
std::int64_t digestFile(IFile& file, Digest& digest, FunctionRef<void()> checkpoint);

}  // namespace zentrel::vistabase::ardelivery
