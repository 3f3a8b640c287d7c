#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace zentrel::vistabase::ardelivery {

class PartWriter;

/// The open writers of a store, at most one per entry. Thread-safe.
class ActiveWriters {
 public:
  /// Throws UsageError if the entry is already being written.
  void add(const std::string& entry, const std::string& part,
           const std::shared_ptr<PartWriter>& writer);
  void remove(const std::string& entry) noexcept;
  /// The names of the part files being written.
  std::set<std::string> parts();
  /// Closes all writers, after waiting for calls in progress.
  void closeAll() noexcept;

 private:
  struct Active {
    std::string part;
    std::shared_ptr<PartWriter> writer;
  };

  std::mutex mutex_;
  std::map<std::string, Active> writers_;  // By entry.
};

}  // namespace zentrel::vistabase::ardelivery
