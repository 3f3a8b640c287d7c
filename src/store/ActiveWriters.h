#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace zentrel::vistabase::ardelivery {

class PartWriter;

/// The writers of a store, one for each entry at most. Any thread.
class ActiveWriters {
 public:
  /// Throws UsageError if the entry is being written already.
  void add(const std::string& entry, const std::string& part,
           const std::shared_ptr<PartWriter>& writer);
  void remove(const std::string& entry) noexcept;
  /// The names of the parts that are being written.
  std::set<std::string> parts();
  /// Closes all of them. What is inside one returns first.
  void closeAll() noexcept;

 private:
  struct Active {
    std::string part;
    std::shared_ptr<PartWriter> writer;
  };

  std::mutex mutex_;
  std::map<std::string, Active> writers_;  // By their entries.
};

}  // namespace zentrel::vistabase::ardelivery
