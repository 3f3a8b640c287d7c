#include "platform/softerror/softerror.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <new>
#include <string>
#include <utility>

namespace softerror {
namespace {

/// A sink that can be replaced while other threads read it, without mixing functions and data.
class SharedSink {
 public:
  explicit SharedSink(Sink sink) noexcept : sink_(sink) {}

  Sink get() noexcept {
    const std::lock_guard<std::mutex> guard(mutex_);
    return sink_;
  }

  Sink exchange(Sink sink) noexcept {
    const std::lock_guard<std::mutex> guard(mutex_);
    return std::exchange(sink_, sink);
  }

 private:
  std::mutex mutex_;
  Sink sink_;
};

// Neither is destroyed, since a cache may report during exit.
SharedSink& currentSink() noexcept {
  alignas(SharedSink) static unsigned char memory[sizeof(SharedSink)];
  static SharedSink& sink = *new (memory) SharedSink({&platformSink, nullptr});
  return sink;
}

SharedSink& currentObserver() noexcept {
  alignas(SharedSink) static unsigned char memory[sizeof(SharedSink)];
  static SharedSink& observer = *new (memory) SharedSink({});
  return observer;
}

void deliver(const Report& report, const Sink& sink) noexcept {
  if (sink.receive == nullptr) {
    return;
  }
  try {
    sink.receive(report, sink.userData);
  } catch (...) {
    // There is nowhere left to report to.
  }
}

const char* orNull(const char* text) {
  return text == nullptr ? "(null)" : text;
}

}  // namespace

Sink setSink(Sink sink) noexcept {
  return currentSink().exchange(sink.receive == nullptr ? Sink{&platformSink, nullptr} : sink);
}

void setObserver(Sink observer) noexcept {
  currentObserver().exchange(observer);
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
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): a false positive of version 14.
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
      // A truncated message is better than none.
    }
  }
  va_end(again);
  va_end(arguments);

  const Report report = {orNull(file),     orNull(function), line,   severity,
                         orNull(category), orNull(format),   message};
  deliver(report, currentSink().get());
  deliver(report, currentObserver().get());
}

}  // namespace softerror
