#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "store/EntryWriter.h"
#include "store/StoreRoot.h"

namespace zentrel::vistabase::ardelivery {

/// What content has to be.
struct ExpectedContent {
  std::string what;  ///< For messages.
  std::int64_t sizeBytes;
  std::string sha256;
};

struct PartPlan;

/// Whoever has a part written.
class PartOwner {
 public:
  virtual ~PartOwner() = default;

  /// Makes the part, of so many synced bytes, the entry.
  virtual void place(const PartPlan& part, std::int64_t bytes) = 0;
  /// Throws if what the part is for has ended.
  virtual void requireRunning() const = 0;
};

/// What a PartWriter is to write.
struct PartPlan {
  std::shared_ptr<PartOwner> owner;
  std::string entry;                        ///< Name of what it is to become,
  std::string part;                         ///< and of the temporary file.
  std::optional<ExpectedContent> expected;  ///< Then the part is kept when the writer is closed.
  /// Whether the name of a part that has to be created lasts, as bytes that are kept need it.
  bool hasLastingName = false;
};

/// Writes the part of one entry. Shared by its PartHandle and the root.
class PartWriter final : public EntryWriter {
 public:
  PartWriter(std::shared_ptr<StoreRoot> root, PartPlan plan);

  /// Makes it the one active writer of its part; UsageError if there is one.
  static void activate(const std::shared_ptr<PartWriter>& writer);
  /// Opens the part and reads what an earlier writer left in it.
  void resume();

  std::int64_t offset() const override;
  void write(const void* bytes, std::size_t count) override;
  void restart() override;
  void commit() override;
  void close() override;

  /// As `close`, by whom the root is closed or the update ended.
  void closeNow() noexcept;

 private:
  bool openKept();
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
  bool isVerified_ = false;  // The part is whole, and its digest right.
  std::int64_t size_ = 0;
};

/// The writer of a part that is being prepared: its owner closes it by destroying this. Made under
/// the root's lock, it is resumed without.
class PartHandle final : public EntryWriter {
 public:
  PartHandle(std::shared_ptr<StoreRoot> root, PartPlan plan);
  PartHandle(const PartHandle&) = delete;
  PartHandle& operator=(const PartHandle&) = delete;
  ~PartHandle() override { writer_->closeNow(); }

  void resume() { writer_->resume(); }

  std::int64_t offset() const override { return writer_->offset(); }
  void write(const void* bytes, std::size_t count) override { writer_->write(bytes, count); }
  void restart() override { writer_->restart(); }
  void commit() override { writer_->commit(); }
  void close() override { writer_->close(); }

 private:
  const std::shared_ptr<PartWriter> writer_;
};

/// Reads the rest of a file and adds it to a digest. Calls `checkpoint`, which may throw, from time
/// to time. Returns the number of bytes.
std::int64_t digestFile(IFile& file, Digest& digest, FunctionRef<void()> checkpoint);

}  // namespace zentrel::vistabase::ardelivery
