#pragma once

/// The soft-error sink: the only place where the library reports failures that it recovers from.
namespace softerror {

/// The severity of a report. Sinks see and store the numbers, which must not change.
enum class Severity : int {
  Recoverable = 1,  ///< An operation failed and returned its neutral result.
  Assertion = 2,    ///< An invariant of the code was violated.
};

/// One report, valid only while the sink runs. No pointer is null.
struct Report {
  const char* file;      ///< The reporting source file.
  const char* function;  ///< The reporting function.
  int line;              ///< The line in the file.
  Severity severity;     ///< The severity.
  const char* category;  ///< The part of the library, as a log tag.
  const char* format;    ///< The printf-style format of the message.
  const char* message;   ///< The formatted message.
};

/// Receives reports, on the thread that reports; several threads may call it at once. Exceptions
/// that it throws are ignored.
struct Sink {
  /// The function to call.
  void (*receive)(const Report& report, void* userData) = nullptr;
  void* userData = nullptr;  ///< Passed to each call. Never freed by the library.
};

/// Writes a report to the platform's log: the system log on Android, elsewhere one line on standard
/// error. Ignores the user data.
void platformSink(const Report& report, void* userData);

/// Sends all further reports to `sink`, or to `platformSink` if its function is null. Returns the
/// previous sink, which may still be running on another thread: keep its user data alive until no
/// thread can be inside it. Thread-safe.
Sink setSink(Sink sink) noexcept;

/// Sends all further reports to `observer` too, after the sink; to none if its function is null.
/// Otherwise like `setSink`.
void setObserver(Sink observer) noexcept;

/// Formats a report and passes it to the sink. Never throws, whatever the arguments: null strings
/// become "(null)", and a format that fails is reported unformatted.
void printSoftError(const char* file, const char* function, int line, Severity severity,
                    const char* category, const char* format, ...) noexcept
    __attribute__((format(printf, 6, 7)));

}  // namespace softerror
