#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace CLI {
class App;
}

/// The parts of modelcache-inspect. Sizes are in bytes, times in milliseconds since 1970.
namespace zentrel::vistabase::ardelivery::inspect {

constexpr const char* kProgram = "modelcache-inspect";

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

/// Declares the options, whose values go to `options`. Help, manual and completion are made of it.
void declare(CLI::App& app, Options& options);

/// The headings and texts that follow the options.
const std::vector<std::pair<std::string, std::string>>& sections();

/// One of the files in which a cache keeps its own affairs.
struct OwnFile {
  bool present = false;
  bool readable = true;                    ///< As far as permissions and the disk go.
  std::optional<std::string> damage = {};  ///< What is wrong with it, and where; printable.
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
  std::optional<std::int64_t> recordedSize = {};  ///< What a store has recorded, as
  std::optional<std::string> sha256 = {};         ///< this.
  bool shared = false;                            ///< Whether other versions use it.
};

/// How far a version has a capability's files.
struct Capability {
  std::string name;
  std::vector<std::string> missing;  ///< Names of the types without a file; empty when complete.
};

struct Version {
  std::int32_t version;
  bool active = false;
  std::int64_t size = 0;  ///< Of its files, each counted once.
  std::vector<Model> models = {};
  std::vector<Capability> capabilities = {};  ///< Those that it has any model of.
};

/// Something that is not in order: "NAME is recorded, but not on disk".
struct Finding {
  std::string name;  ///< Any bytes, or none.
  std::string text;  ///< Printable.
};

/// What lies under a root.
struct Report {
  std::string root;
  OwnFile metadata, index, table;
  std::vector<Group> groups;   ///< All that lies there.
  std::int64_t totalSize = 0;  ///< As the cache's next operation would count it.
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

/// Reads one of the cache's own files through `read`, whose exception becomes the file's damage,
/// and a finding.
OwnFile readOwnFile(Report& report, const std::string& name,
                    const std::function<void(const std::string&)>& read);

/// Adds the versions of the index and of a store's table.
void inspectVersions(Report& report);

/// Reads the files of which a store has recorded the digest; those that differ are findings.
void verify(Report& report);

/// The bytes in hexadecimal digits, lower case.
std::string toHex(std::string_view bytes);

/// For people, in lines of `width` columns at most.
std::string toText(const Report& report, std::size_t width, bool coloured);

/// For scripts: a line of JSON, with the names as above. Of a text that is no UTF-8, NAMEHex has
/// the bytes in hexadecimal digits.
std::string toJson(const Report& report);
std::string toJson(const std::string& root, const std::string& error);

}  // namespace zentrel::vistabase::ardelivery::inspect
