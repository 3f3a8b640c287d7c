#include "platform/softerror/softerror.h"

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <new>
#include <string>

namespace softerror {
namespace {

std::atomic<Sink> currentSink{&platformSink};
std::atomic<Sink> currentObserver{nullptr};

void give(const Report& report, Sink receiver) noexcept {
  try {
    receiver(report);
  } catch (...) {
    // There is no further place to report to.
  }
}

const char* orNull(const char* text) {
  return text == nullptr ? "(null)" : text;
}

}  // namespace

Sink setSink(Sink sink) noexcept {
  return currentSink.exchange(sink == nullptr ? &platformSink : sink);
}

void setObserver(Sink observer) noexcept {
  currentObserver = observer;
}

void printSoftError(const char* file, const char* function, int line, Severity severity,
                    const char* category, const char* format, ...) noexcept {
  char shortMessage[512];
  std::string longMessage;
  const char* message = shortMessage;

  va_list arguments;
  va_list again;
  va_start(arguments, format);
  va_copy(again, arguments);
  int length = -1;
  if (format != nullptr) {
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): a false alarm of version 14.
    length = std::vsnprintf(shortMessage, sizeof shortMessage, format, arguments);
  }
  if (length < 0) {
    message = orNull(format);
  } else if (static_cast<std::size_t>(length) >= sizeof shortMessage) {
    try {
      longMessage.resize(static_cast<std::size_t>(length));
      std::vsnprintf(longMessage.data(), longMessage.size() + 1, format, again);
      message = longMessage.c_str();
    } catch (const std::bad_alloc&) {
      // The beginning of the message is better than none.
    }
  }
  va_end(again);
  va_end(arguments);

  const Report report = {orNull(file),     orNull(function), line,   severity,
                         orNull(category), orNull(format),   message};
  give(report, currentSink);
  if (const Sink observer = currentObserver) {
    give(report, observer);
  }
}

}  // namespace softerror
