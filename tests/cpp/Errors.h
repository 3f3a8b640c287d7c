#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/softerror/softerror.h"

/// The text of what the call throws.
template <class Call>
std::string errorOf(const Call& call) {
  try {
    call();
    return "no error";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

/// Collects the soft errors reported during its lifetime.
class SoftErrorRecorder {
 public:
  struct Record {
    std::string file, function;
    int line, severity;
    std::string category, format, message;
  };

  ~SoftErrorRecorder() { softerror::setSink(previous_); }

  std::vector<Record> take() { return std::exchange(records_, {}); }
  /// Like `take`, but only the texts.
  std::vector<std::string> takeMessages() {
    std::vector<std::string> messages;
    for (const Record& record : take()) {
      messages.push_back(record.message);
    }
    return messages;
  }

 private:
  static void record(const softerror::Report& report, void* records) {
    static_cast<std::vector<Record>*>(records)->push_back(
        {report.file, report.function, report.line, static_cast<int>(report.severity),
         report.category, report.format, report.message});
  }

  std::vector<Record> records_;
  softerror::Sink previous_ = softerror::setSink({&record, &records_});
};
