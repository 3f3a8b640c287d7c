#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zentrel::vistabase::ardelivery::bench {

/// The same contract as its users would write it on SQLite: a table of keys, sizes and times beside
/// the files, in WAL mode, a transaction per operation, statements prepared once. It trusts its
/// table: unlike the file cache, it does not look for files that came or went behind its back.
class SqliteCache {
 public:
  /// `synchronous` is SQLite's setting of that name: OFF or NORMAL.
  SqliteCache(std::string root, std::int64_t budget, const std::string& synchronous);

  /// The path of the entry, promoted, or nothing when it is not there.
  std::optional<std::string> get(const std::string& key);

  /// Records a file that has been written, then evicts the least recently used ones.
  void commit(const std::string& key);

  bool remove(const std::string& key);

  /// Records files of one size, by age, as the oldest ones.
  void adopt(const std::vector<std::string>& keys, std::int64_t size);

 private:
  struct Closer {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  class Run;
  class Transaction;
  using Statement = std::unique_ptr<sqlite3_stmt, Closer>;

  Statement prepare(const char* text);
  bool removeInTransaction(const std::string& key);

  const std::string root_;
  const std::int64_t budget_;
  std::unique_ptr<sqlite3, Closer> database_;
  Statement begin_, end_, promote_, put_, delete_, total_, oldest_;
};

}  // namespace zentrel::vistabase::ardelivery::bench
