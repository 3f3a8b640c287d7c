#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace zentrel::vistabase::ardelivery {

/// A store could not do what it was asked to. What was committed before stays as it was, unless the
/// call says otherwise.
class StoreError : public std::runtime_error {
 public:
  /// What to do about it: wait, make room, fetch again or report.
  enum class Reason {
    NoRoom,        ///< The budget does not allow it; see `room`.
    DiskFull,      ///< The file system does not allow it, or a quota; see `room`.
    TooShort,      ///< Bytes are missing at the end. Those that came are kept.
    WrongContent,  ///< Too many bytes, or not the right ones. They were dropped.
    InUse,         ///< Another store has the root.
    ReadOnly,      ///< The root cannot be written to.
    Damaged,       ///< Committed files are lost or damaged.
    Io,            ///< Anything else that the system refused.
  };

  /// Numbers that go with NoRoom and DiskFull, in bytes.
  struct Room {
    std::int64_t needed = 0;  ///< That were asked for.
    std::int64_t budget = 0;  ///< Of the store.
    std::int64_t free = 0;    ///< On the file system, for this process; -1 if that is unknown.
  };

  /// `path` is the file or directory that it is about, `error` the system's errno; empty and 0 if
  /// there is none.
  StoreError(Reason reason, const std::string& message, std::string path = {}, int error = 0,
             std::optional<Room> room = {});

  Reason reason() const noexcept { return reason_; }                  ///< What kind of failure.
  const std::string& path() const noexcept { return path_; }          ///< May be empty.
  int error() const noexcept { return error_; }                       ///< errno, or 0.
  const std::optional<Room>& room() const noexcept { return room_; }  ///< None for most.

  /// Whether the process or the system is short of descriptors or memory, so that the failure says
  /// nothing of the file.
  bool isShortage() const noexcept;

  /// A failed system call: "cannot ACTION PATH: what errno means". `isChange` is whether the call
  /// was to change something, so that a lack of permission means ReadOnly.
  static StoreError ofSystem(const char* action, const std::string& path, int error, bool isChange);

 private:
  Reason reason_;
  std::string path_;
  int error_;
  std::optional<Room> room_;
};

/// A store was used wrongly: after it was closed, twice at a time where once is allowed, or from a
/// soft-error sink in the middle of a call of its own.
class UsageError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// An update was cancelled, or ended by the close of its store.
class CancelledError : public UsageError {
 public:
  using UsageError::UsageError;
};

}  // namespace zentrel::vistabase::ardelivery
