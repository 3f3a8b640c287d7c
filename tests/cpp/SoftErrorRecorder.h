#pragma once

#include <string>
#include <vector>

#include "platform/softerror/softerror.h"

/// Collects the soft errors that are reported while it lives.
class SoftErrorRecorder {
 public:
  struct Record {
    std::string file, function;
    int line;
    int severity;
    std::string category, format, message;
  };

  SoftErrorRecorder() : previous_(softerror::setSink({&record, &records()})) { records().clear(); }
  ~SoftErrorRecorder() { softerror::setSink(previous_); }

  static std::vector<Record>& records() {
    static std::vector<Record> all;
    return all;
  }

 private:
  static void record(const softerror::Report& report, void* records) {
    static_cast<std::vector<Record>*>(records)->push_back(
        {report.file, report.function, report.line, static_cast<int>(report.severity),
         report.category, report.format, report.message});
  }

  softerror::Sink previous_;
};
