#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace zentrel::vistabase::ardelivery {

/// A store operation failed. What was committed before is unchanged, unless the operation says
/// otherwise.
class StoreError : public std::runtime_error {
 public:
  /// Why it failed, which decides whether to wait, make room, fetch again or report.
  enum class Reason {
    NoRoom,        ///< The budget is too small; see `room`.
    DiskFull,      ///< The file system or a quota is full; see `room`.
    TooShort,      ///< Bytes are missing at the end. Those received are kept.
    WrongContent,  ///< Too many bytes, or wrong ones. They were dropped.
    InUse,         ///< Another store has the root.
    ReadOnly,      ///< The root is not writable.
    Damaged,       ///< Committed files are lost or damaged.
    Io,            ///< Any other I/O error.
  };

  /// The numbers behind NoRoom and DiskFull, in bytes.
  struct Room {
    /// What would be enough: of the budget for NoRoom, of free bytes for DiskFull.
    std::int64_t needed = 0;
    std::int64_t budget = 0;  ///< The store's.
    std::int64_t free = 0;    ///< Available to this process on the file system; -1 if unknown.
  };

  /// `path` is the file or directory concerned, `error` the errno; empty and 0 if there is none.
  StoreError(Reason reason, const std::string& message, std::string path = {}, int error = 0,
             std::optional<Room> room = {});

  Reason reason() const noexcept { return reason_; }                  ///< Why it failed.
  const std::string& path() const noexcept { return path_; }          ///< May be empty.
  int error() const noexcept { return error_; }                       ///< errno, or 0.
  const std::optional<Room>& room() const noexcept { return room_; }  ///< Unset for most.

  /// Whether the process or the system ran out of descriptors or memory, in which case the failure
  /// says nothing about the file.
  bool isShortage() const noexcept;

  /// The error of a failed system call: "cannot ACTION PATH: what errno means". `isChange` says
  /// whether the call modifies the disk, in which case a lack of permission means ReadOnly.
  static StoreError ofSystem(const char* action, const std::string& path, int error, bool isChange);

 private:
  Reason reason_;
  std::string path_;
  int error_;
  std::optional<Room> room_;
};

/// A store was misused: after it was closed, concurrently where only one use is allowed, or by a
/// soft-error sink from inside another call.
class UsageError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// An update was cancelled, or ended because its store was closed.
class CancelledError : public UsageError {
 public:
  using UsageError::UsageError;
};

}  // namespace zentrel::vistabase::ardelivery
