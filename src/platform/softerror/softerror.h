#pragma once

/// The soft-error sink: the one way in which the library reports a failure that it survives.
namespace softerror {

/// How bad a report is. The numbers are what a sink sees and stores; they are not to change.
enum class Severity : int {
  Recoverable = 1,  ///< An operation failed and gave its neutral result.
  Assertion = 2,    ///< A promise of the code itself was broken.
};

/// One report, valid only during the call of the sink. No pointer is null.
struct Report {
  const char* file;      ///< Where the code that reports is.
  const char* function;  ///< Which function reports.
  int line;              ///< The line in the file.
  Severity severity;     ///< How bad it is.
  const char* category;  ///< The part of the library; a tag for the log.
  const char* format;    ///< The printf-style format, as the reporting code gave it.
  const char* message;   ///< The formatted message.
};

/// Receives reports, on the thread that reports; several threads may be in it at once. An exception
/// that it throws is dropped.
struct Sink {
  /// Null for no sink.
  void (*receive)(const Report& report, void* userData) = nullptr;
  void* userData = nullptr;  ///< Passed to each call. It is never freed here.
};

/// Writes a report where the platform keeps its log: the system log on Android, elsewhere one line
/// on standard error. The user data is not used.
void platformSink(const Report& report, void* userData);

/// Sends all further reports to `sink`, or to `platformSink` when its function is null. Returns the
/// sink that was in place, which may still be running on another thread: keep its user data until
/// no such thread can be inside it. May be called from any thread.
Sink setSink(Sink sink) noexcept;

/// Has `observer` receive all further reports too, after the sink, or nothing when its function is
/// null. Otherwise as `setSink`.
void setObserver(Sink observer) noexcept;

/// Formats a report and hands it to the sink. Never throws, whatever the arguments: a null text is
/// replaced by "(null)", a format that cannot be formatted is reported as it stands.
void printSoftError(const char* file, const char* function, int line, Severity severity,
                    const char* category, const char* format, ...) noexcept
    __attribute__((format(printf, 6, 7)));

}  // namespace softerror
