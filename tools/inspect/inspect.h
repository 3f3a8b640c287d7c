#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "store/IDisk.h"

/// The parts of modelcache-inspect. Sizes are in bytes, times in milliseconds since 1970.
namespace zentrel::vistabase::ardelivery::inspect {

class DryStore;

struct Options {
  std::vector<std::string> roots;
  std::optional<std::int64_t> budget;
  std::int64_t begin = 0;
  std::string sort = "name";
  bool json = false, verify = false, check = false, force = false;
  // What is to be done instead of showing; one of them at most.
  bool recover = false;
  std::optional<std::int32_t> activate;
  std::vector<std::int32_t> trimExcept;
  std::pair<std::int32_t, std::string> exported;  ///< A version and a folder.
};

/// A file or a folder of the root, or the record of one.
struct Entry {
  std::string name;
  /// "present", "only recorded", "only on disk", "unfinished", "running", "other".
  std::string state = {};
  std::optional<std::int64_t> recordedSize = {};  ///< None without a record.
  std::optional<std::int64_t> lastAccess = {};    ///< As recorded, or when the file changed.
  std::optional<std::int64_t> sizeOnDisk = {};    ///< None if it cannot be measured.
  std::optional<std::int64_t> extraSize = {};     ///< None without extra bytes.
  std::optional<std::int64_t> evicted = {};       ///< Its place among what is deleted next.
  std::vector<std::int32_t> versions = {};        ///< Those that use it.

  /// As the cache would count it.
  std::int64_t size() const { return recordedSize.value_or(sizeOnDisk.value_or(0)); }
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
  std::int64_t format = 1;  ///< Of this report as JSON; another one if a member gets another sense.
  std::string root;
  std::string holds = "a raw cache";  ///< Or what a store says that it does.
  std::optional<std::string> holder;  ///< Who has the root: "the process 12 (app)".
  std::string metadata, index;        ///< As `readOwnFile` returns it; "" in a store's root.
  std::int64_t size = 0;              ///< Of all that lies there.
  std::int64_t totalSize = 0;         ///< As the cache's next operation would count it.
  std::optional<std::int64_t> budget;
  std::int64_t begin = 0;  ///< Bytes that are to be added.
  std::vector<Entry> entries, others;
  std::vector<Version> versions;
  std::vector<std::int32_t> evictedVersions;
  std::optional<std::uint64_t> verifiedFiles;
  std::vector<Finding> findings;
  bool damaged = false;  ///< Whether a version has lost or damaged files.

  bool isStore() const { return metadata.empty(); }
  void find(std::string name, std::string text) {
    findings.push_back({std::move(name), std::move(text)});
  }
};

/// A root that is being looked at.
struct Inspection {
  const Options& options;
  const std::shared_ptr<IDirectory> directory;
  Report report = {};
  std::map<std::string, Entry> entries = {};
};

/// By a raw cache's rules: records, budget, and the versions of the index.
void inspectCache(Inspection& inspection);
/// By a store's rules: its versions, what an open would mend, and what an update would delete.
void inspectStore(Inspection& inspection, DryStore& store);
/// Bytes of a file, or of those below a folder, as a raw cache counts them; none if it would fail.
std::optional<std::int64_t> measure(const std::string& path);

/// The roots that `folder` stands for: itself, if it looks like one, or else those in it. Throws
/// std::exception, with a text for the user, when there is none.
std::vector<std::string> rootsIn(const std::string& folder, bool force);
/// Looks at a root without changing anything. Throws as `rootsIn` when it cannot be read at all.
Report inspect(const std::string& root, const Options& options);
/// Does what the options ask for instead. Returns what was done; throws with nothing done.
std::string act(const std::string& root, const Options& options);
/// For people, in lines of `width` columns at most; SIZE_MAX is no limit.
std::string toText(const Report& report, std::size_t width);
/// For scripts: a line of JSON, with the names as above. Of a text that is not harmless UTF-8,
/// "NAMEHex" has the bytes in hexadecimal digits.
std::string toJson(const Report& report);
std::string toJson(const std::string& root, const std::string& error);
/// The bytes as harmless UTF-8, with what `replace` gives for each run of bytes that is no
/// character, or is one that a terminal obeys or does not show.
std::string toUtf8(std::string_view bytes,
                   const std::function<std::string(std::string_view run)>& replace);
/// The bytes for a terminal: \xNN for each that is no part of a harmless character.
std::string printable(std::string_view bytes);
/// Columns that a printable text takes.
std::size_t columns(std::string_view text);
/// The same with its middle cut out, so that it takes at most `width` columns. Of a model file's
/// name, the type at its end stays if it fits.
std::string cut(const std::string& text, std::size_t width);

}  // namespace zentrel::vistabase::ardelivery::inspect
