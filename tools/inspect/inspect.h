#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The parts of modelcache-inspect. Sizes are in bytes, times in milliseconds since 1970.
namespace zentrel::vistabase::ardelivery::inspect {

/// Where a store keeps its versions, in the root and once more among the extra bytes.
constexpr const char* kTableName = ".versions";

struct Options {
  std::vector<std::string> roots;
  std::optional<std::int64_t> budget;
  std::string sort = "name";
  bool json = false;
  bool verify = false;
  bool check = false;
  bool force = false;
  bool recover = false;
};

/// A file or a folder of the root, or the record of one.
struct Entry {
  std::string name;
  std::string state = {};  ///< "present", "only recorded", "only on disk", "unfinished", "other".
  std::optional<std::int64_t> recordedSize = {};  ///< None without a record.
  std::optional<std::int64_t> lastAccess = {};    ///< As recorded, or when another file changed.
  std::optional<std::int64_t> sizeOnDisk = {};    ///< None if it cannot be measured.
  std::optional<std::int64_t> extraSize = {};     ///< None without extra bytes.
  std::optional<std::int64_t> evicted = {};       ///< Its place among what the next commit evicts.
  std::vector<std::int32_t> versions = {};        ///< Those that use it.

  /// As the cache would count it.
  std::int64_t size() const { return recordedSize.value_or(sizeOnDisk.value_or(0)); }
};

/// All files of one sort, with those below folders.
struct Group {
  std::string name;
  std::uint64_t size = 0;
  std::uint64_t files = 0;
};

struct Model {
  std::string type;
  std::string cacheKey;
  std::string name;                               ///< Of its file; "" if the cache refuses the key.
  std::optional<std::int64_t> size = {};          ///< None without a file.
  std::optional<std::int64_t> recordedSize = {};  ///< By a store,
  std::optional<std::string> sha256 = {};         ///< as this.
};

struct Version {
  std::int32_t version;
  bool active = false;
  std::int64_t size = 0;  ///< Of its files, each counted once.
  std::vector<Model> models = {};
  /// From each capability that it has any model of to the types of which there is no file.
  std::map<std::string, std::vector<std::string>> capabilities = {};
};

/// Something that is not in order: "NAME is recorded, but not on disk".
struct Finding {
  std::string name;  ///< Any bytes, or none.
  std::string text;  ///< Printable.
};

/// What lies under a root.
struct Report {
  std::string root;
  std::string metadata, index, table;  ///< As `readOwnFile` returns it.
  std::vector<Group> groups;           ///< All that lies there.
  std::int64_t totalSize = 0;          ///< As the cache's next operation would count it.
  std::optional<std::int64_t> budget;
  std::vector<Entry> entries, others;
  std::vector<Version> versions;
  std::optional<std::uint64_t> verifiedFiles;
  std::vector<Finding> findings;

  void find(std::string name, std::string text) {
    findings.push_back({std::move(name), std::move(text)});
  }
};

/// The roots that `folder` stands for: itself, if it looks like one, or else those in it. Throws
/// std::exception, with a text for the user, when there is none.
std::vector<std::string> rootsIn(const std::string& folder, bool force);
/// Looks at a root without changing anything. Throws as `rootsIn` when it cannot be read at all.
Report inspect(const std::string& root, const Options& options);
/// Reads one of the files in which a cache keeps its own affairs. Returns "missing", "present" or,
/// as a finding too, what is wrong with it, such as the text of what `read` throws.
std::string readOwnFile(Report& report, const std::string& name,
                        const std::function<void(const std::string&)>& read);
/// Bytes of a file, or of those below a folder, as the cache counts them; none if it would fail.
std::optional<std::int64_t> measure(const std::string& path);
/// Adds the versions of the index and of a store's table. If `isVerifying`, reads the files whose
/// digests the store has recorded, too; those that differ are findings.
void inspectVersions(Report& report, bool isVerifying);
/// For people, in lines of `width` columns at most; SIZE_MAX is no limit.
std::string toText(const Report& report, std::size_t width);
/// For scripts: a line of JSON, with the names as above. Of a text that is not harmless UTF-8,
/// "NAMEHex" has the bytes in hexadecimal digits.
std::string toJson(const Report& report);
std::string toJson(const std::string& root, const std::string& error);
/// The bytes as harmless UTF-8, with what `replace` gives for each run of bytes that is no
/// character, or is one that a terminal obeys.
std::string toUtf8(std::string_view bytes,
                   const std::function<std::string(std::string_view run)>& replace);
/// The bytes for a terminal: \xNN for each that is no part of a harmless character.
std::string printable(std::string_view bytes);
/// Columns that a printable text takes.
std::size_t columns(std::string_view text);

}  // namespace zentrel::vistabase::ardelivery::inspect
