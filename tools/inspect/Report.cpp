#include "tools/inspect/Report.h"

#include <ctime>

namespace zentrel::vistabase::ardelivery::inspect {

std::int64_t Entry::size() const {
  return recordedSize.value_or(static_cast<std::int64_t>(sizeOnDisk.value_or(0)));
}

const char* Entry::state() const {
  if (!onDisk) {
    return "only recorded";
  }
  return recordedSize ? "present" : "only on disk";
}

std::string toDate(std::int64_t milliseconds, bool utc) {
  constexpr std::int64_t thousand = 1000;
  const auto seconds = static_cast<std::time_t>(milliseconds / thousand);
  std::tm parts = {};
  char text[64];
  if (milliseconds < 0 ||
      (utc ? gmtime_r(&seconds, &parts) : localtime_r(&seconds, &parts)) == nullptr ||
      std::strftime(text, sizeof text, utc ? "%Y-%m-%dT%H:%M:%SZ" : "%Y-%m-%d %H:%M:%S", &parts) ==
          0) {
    return std::to_string(milliseconds) + " ms";
  }
  return text;
}

}  // namespace zentrel::vistabase::ardelivery::inspect
