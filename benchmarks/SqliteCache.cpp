#include "benchmarks/SqliteCache.h"

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <utility>

namespace zentrel::vistabase::ardelivery::bench {
namespace {

std::int64_t now() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
}

}  // namespace

/// One run of a prepared statement; ready for the next one when destroyed.
class SqliteCache::Run {
 public:
  explicit Run(const Statement& statement) : statement_(statement.get()) {}
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;
  ~Run() { sqlite3_reset(statement_); }

  Run& bind(const std::string& text) {
    sqlite3_bind_text(statement_, ++bound_, text.data(), static_cast<int>(text.size()),
                      SQLITE_STATIC);
    return *this;
  }
  Run& bind(std::int64_t number) {
    sqlite3_bind_int64(statement_, ++bound_, number);
    return *this;
  }
  /// Whether there is another row.
  bool step() {
    const int result = sqlite3_step(statement_);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
      throw std::runtime_error(sqlite3_errmsg(sqlite3_db_handle(statement_)));
    }
    return result == SQLITE_ROW;
  }
  std::int64_t number(int column) const { return sqlite3_column_int64(statement_, column); }
  std::string text(int column) const {
    return reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  }

 private:
  sqlite3_stmt* const statement_;
  int bound_ = 0;
};

class SqliteCache::Transaction {
 public:
  explicit Transaction(const SqliteCache& cache) : cache_(cache) { Run(cache.begin_).step(); }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction() { sqlite3_step(cache_.end_.get()), sqlite3_reset(cache_.end_.get()); }

 private:
  const SqliteCache& cache_;
};

SqliteCache::SqliteCache(std::string root, std::int64_t budget, const std::string& synchronous)
    : root_(std::move(root) + "/"), budget_(budget) {
  sqlite3* database = nullptr;
  const int result = sqlite3_open((root_ + ".index.sqlite").c_str(), &database);
  database_.reset(database);
  const std::string setUp =
      "PRAGMA journal_mode = WAL; PRAGMA synchronous = " + synchronous +
      "; CREATE TABLE entries(key TEXT PRIMARY KEY, size INTEGER, last_access INTEGER);"
      "CREATE INDEX by_age ON entries(last_access)";
  if (result != SQLITE_OK ||
      sqlite3_exec(database, setUp.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(database));
  }
  begin_ = prepare("BEGIN IMMEDIATE");
  end_ = prepare("COMMIT");
  promote_ = prepare("UPDATE entries SET last_access = ?2 WHERE key = ?1");
  put_ = prepare("INSERT OR REPLACE INTO entries VALUES(?1, ?2, ?3)");
  delete_ = prepare("DELETE FROM entries WHERE key = ?1");
  total_ = prepare("SELECT sum(size) FROM entries");
  oldest_ = prepare("SELECT key, size FROM entries ORDER BY last_access");
}

SqliteCache::Statement SqliteCache::prepare(const char* text) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v3(database_.get(), text, -1, SQLITE_PREPARE_PERSISTENT, &statement,
                         nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(database_.get()));
  }
  return Statement(statement);
}

std::optional<std::string> SqliteCache::get(const std::string& key) {
  const Transaction transaction(*this);
  std::string path = root_ + key;
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) {
    return std::nullopt;
  }
  Run(promote_).bind(key).bind(now()).step();
  return path;
}

void SqliteCache::commit(const std::string& key) {
  struct stat status = {};
  if (::stat((root_ + key).c_str(), &status) != 0) {
    throw std::runtime_error("No file for " + key);
  }
  const Transaction transaction(*this);
  Run(put_).bind(key).bind(status.st_size).bind(now()).step();
  Run total(total_);
  total.step();
  std::int64_t excess = total.number(0) - budget_;
  if (excess <= 0) {
    return;
  }
  std::vector<std::string> evicted;
  for (Run oldest(oldest_); excess > 0 && oldest.step();) {
    evicted.push_back(oldest.text(0));
    excess -= oldest.number(1);
  }
  for (const std::string& name : evicted) {
    removeInTransaction(name);
  }
}

bool SqliteCache::remove(const std::string& key) {
  const Transaction transaction(*this);
  return removeInTransaction(key);
}

bool SqliteCache::removeInTransaction(const std::string& key) {
  Run(delete_).bind(key).step();
  return ::unlink((root_ + key).c_str()) == 0;
}

void SqliteCache::adopt(const std::vector<std::string>& keys, std::int64_t size) {
  const Transaction transaction(*this);
  std::int64_t lastAccess = 0;
  for (const std::string& key : keys) {
    Run(put_).bind(key).bind(size).bind(lastAccess++).step();
  }
}

}  // namespace zentrel::vistabase::ardelivery::bench
