#include <openssl/evp.h>
#include <unistd.h>

#include <algorithm>
#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string/case_conv.hpp>
#include <boost/crc.hpp>
#include <cstdio>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <unordered_map>

#include "delivery/FileCache/CacheKey.h"
#include "delivery/FileCache/ICacheMetadata.h"
#include "delivery/ModelCache/CacheDescriptorSerializer.h"
#include "delivery/ModelCache/FacetrackerModelCache.h"
#include "delivery/ModelCache/SegmentationModelCache.h"
#include "delivery/ModelCache/VersionedModelCacheImpl.h"
#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

std::string nameOf(const Version& version) {
  return "version " + std::to_string(version.version);
}

void readIndex(Report& report) {
  auto descriptor = std::make_unique<CacheDescriptor>();
  report.index = readOwnFile(
      report, VersionedModelCacheImpl::kIndexKey,
      [&](const std::string& text) { descriptor = CacheDescriptorSerializer().deserialize(text); });
  for (const VersionRecord& record : descriptor->versions) {
    Version& version = report.versions.emplace_back(Version{record.version});
    for (const ModelRecord& model : record.models) {
      std::string name;
      try {
        name = fileNameOf(model.cacheKey);
      } catch (const std::exception&) {
        // To the caller of the file cache, a key that it refuses is not there either.
      }
      version.models.push_back({model.type, model.cacheKey, name});
    }
  }
}

/// What a store has recorded; see docs/on-disk.md.
struct StoreTable {
  std::int64_t sequence = 0;
  std::vector<Version> versions;
  std::vector<std::string> damaged;
  std::optional<std::int32_t> active;
};

/// Lines of a kind that is not known are passed over. False if the line makes no sense.
bool readLine(std::istringstream words, StoreTable& table) {
  std::string kind;
  words >> kind;
  if (kind == "sequence") {
    words >> table.sequence;
  } else if (kind == "version") {
    words >> table.versions.emplace_back().version;
  } else if (kind == "damaged") {
    words >> table.damaged.emplace_back();
  } else if (kind == "active") {
    words >> table.active.emplace();
  } else if (kind == "file") {
    Model file;
    words >> file.type >> file.recordedSize.emplace() >> file.sha256.emplace() >> file.name;
    // Whoever can write to a root can make up a table, but not lead its reader out of the root.
    if (!words || table.versions.empty() || file.name.front() == '.' ||
        file.name.find('/') != std::string::npos) {
      return false;
    }
    file.cacheKey = file.name;
    boost::algorithm::to_lower(*file.sha256);
    table.versions.back().models.push_back(std::move(file));
  }
  return !words.fail();
}

StoreTable parseTable(const std::string& text) {
  const std::size_t end = std::min(text.rfind("check "), text.size());
  boost::crc_32_type sum;
  sum.process_bytes(text.data(), end);
  std::ostringstream check;
  check << "check " << std::hex << sum.checksum() << '\n';
  if (text.substr(end) != check.str()) {
    throw std::runtime_error("the checksum is wrong");
  }
  StoreTable table;
  std::istringstream lines(text.substr(0, end));
  int number = 1;
  for (std::string line; std::getline(lines, line); ++number) {
    if (!line.empty() && !readLine(std::istringstream(line), table)) {
      throw std::runtime_error("line " + std::to_string(number) + " makes no sense");
    }
  }
  return table;
}

/// The newer one of a store's good copies, or none.
std::optional<StoreTable> readTable(Report& report) {
  const std::string names[] = {kTableName, std::string("extra/") + kTableName};
  std::string states[2];
  std::string texts[2];
  std::optional<StoreTable> tables[2];
  for (int i = 0; i < 2; ++i) {
    states[i] = readOwnFile(report, names[i], [&](const std::string& text) {
      texts[i] = text;
      tables[i] = parseTable(text);
    });
  }
  report.table = states[0];
  const bool isFirst = tables[0] && (!tables[1] || tables[0]->sequence >= tables[1]->sequence);
  const int other = isFirst ? 1 : 0;
  if (tables[1 - other] && states[other] == "missing") {
    report.find(names[other], "is missing: of the store's versions there is one copy");
  } else if (tables[0] && tables[1] && texts[0] != texts[1]) {
    report.find(names[other], "is not the same as the other copy, which holds");
  }
  return tables[1 - other];
}

std::set<std::pair<std::string, std::string>> filesOf(const Version& version) {
  std::set<std::pair<std::string, std::string>> files;
  for (const Model& model : version.models) {
    files.emplace(model.type, model.name);
  }
  return files;
}

/// Puts the versions of a table in place of those of the index.
void addTable(const StoreTable& table, Report& report) {
  std::unordered_map<std::int32_t, std::size_t> indexed;
  for (std::size_t i = 0; i < report.versions.size(); ++i) {
    indexed.emplace(report.versions[i].version, i);
  }
  bool hasActive = !table.active;
  for (Version version : table.versions) {
    version.active = version.version == table.active;
    hasActive = hasActive || version.active;
    const auto found = indexed.find(version.version);
    const bool isIndexed = found != indexed.end();
    if (!isIndexed && (report.index == "missing" || report.index == "present")) {
      report.find({}, nameOf(version) + " is not in versioned_index");
    } else if (isIndexed && filesOf(report.versions[found->second]) != filesOf(version)) {
      report.find({}, nameOf(version) + " has other files in versioned_index");
    }
    Version& place = isIndexed ? report.versions[found->second] : report.versions.emplace_back();
    place = std::move(version);
  }
  if (!hasActive) {
    report.find({}, "the active version " + std::to_string(*table.active) + " is not there");
  }
  for (const std::string& name : table.damaged) {
    report.find(name, "was found to have wrong bytes");
  }
}

/// Finds the files of versions, and the versions of files.
void matchFiles(Report& report) {
  std::unordered_map<std::string_view, Entry*> entries;
  for (Entry& entry : report.entries) {
    entries.emplace(entry.name, &entry);
  }
  for (Version& version : report.versions) {
    std::set<std::string_view> counted;
    for (Model& model : version.models) {
      // The key a/b is the file b in the folder a%, which is the entry.
      const auto found = entries.find(std::string_view(model.name).substr(0, model.name.find('/')));
      if (found == entries.end()) {
        continue;
      }
      Entry& entry = *found->second;
      model.size = measure(report.root + '/' + model.name);
      if (entry.versions.empty() || entry.versions.back() != version.version) {
        entry.versions.push_back(version.version);
      }
      if (model.size && counted.insert(model.name).second) {
        version.size = wrappingAdd(version.size, *model.size);
      }
    }
  }
}

template <class Cache>
void addCapability(const char* name, Version& version, std::set<std::string_view>& known) {
  std::vector<std::string> missing;
  bool isNamed = false;
  for (const auto& row : Cache::kModels) {
    bool isPresent = false;
    for (const Model& model : version.models) {
      isNamed = isNamed || model.type == row.name;
      isPresent = isPresent || (model.type == row.name && model.size);
    }
    known.insert(row.name);
    missing.insert(missing.end(), isPresent ? 0 : 1, row.name);
  }
  if (isNamed) {
    version.capabilities.emplace(name, std::move(missing));
  }
}

void judge(Version& version, Report& report) {
  std::set<std::string_view> known;
  addCapability<FacetrackerModelCache>("face tracking", version, known);
  addCapability<SegmentationModelCache>("segmentation", version, known);
  for (const Model& model : version.models) {
    if (known.count(model.type) == 0) {
      report.find(model.type, "of " + nameOf(version) + " is no known type of model");
    }
    if (model.recordedSize && model.size && *model.size != *model.recordedSize) {
      report.find(model.name, "has " + std::to_string(*model.size) + " bytes, but " +
                                  std::to_string(*model.recordedSize) + " belong to " +
                                  nameOf(version));
    }
  }
  for (const auto& [capability, missing] : version.capabilities) {
    const std::string failure =
        nameOf(version) + " of " + capability + " is not complete: no file for ";
    for (const std::string& type : missing) {
      report.find({}, failure + type);
    }
  }
}

/// The file's digest in hexadecimal digits, lower case; none if it cannot be read.
std::optional<std::string> sha256Of(const std::string& path) {
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                        &EVP_MD_CTX_free);
  std::ifstream file(path, std::ios::binary);
  bool isGood = file && EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) == 1;
  std::vector<char> buffer(std::size_t{1} << 18);
  while (isGood && file) {
    file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    isGood = !file.bad() && EVP_DigestUpdate(context.get(), buffer.data(),
                                             static_cast<std::size_t>(file.gcount())) == 1;
  }
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned length = 0;
  if (!isGood || EVP_DigestFinal_ex(context.get(), digest, &length) != 1) {
    return std::nullopt;
  }
  return boost::algorithm::hex_lower(std::string(digest, digest + length));
}

void verify(Report& report) {
  std::set<std::pair<std::string, std::string>> expected;  // By name and digest.
  for (const Version& version : report.versions) {
    for (const Model& model : version.models) {
      if (model.sha256 && model.size == model.recordedSize) {  // Others are findings already.
        expected.emplace(model.name, *model.sha256);
      }
    }
  }
  const bool isTerminal = ::isatty(STDERR_FILENO) == 1;
  report.verifiedFiles = 0;
  for (const auto& [name, sha256] : expected) {
    if (isTerminal) {
      std::fprintf(stderr, "\r%llu of %zu files verified",
                   static_cast<unsigned long long>(*report.verifiedFiles), expected.size());
    }
    if (const auto digest = sha256Of(report.root + '/' + name); digest != sha256) {
      report.find(name, digest ? "differs from its recorded digest" : "cannot be read");
    }
    ++*report.verifiedFiles;
  }
  if (isTerminal) {
    std::fputs("\r\x1b[K", stderr);
  }
}

}  // namespace

void inspectVersions(Report& report, bool isVerifying) {
  readIndex(report);
  if (const std::optional<StoreTable> table = readTable(report)) {
    addTable(*table, report);
  }
  matchFiles(report);
  std::set<std::string> capabilities;
  for (Version& version : report.versions) {
    judge(version, report);
    for (const auto& [capability, missing] : version.capabilities) {
      capabilities.insert(capability);
    }
  }
  if (capabilities.size() > 1) {
    report.find({}, "face tracking and segmentation overwrite each other's versions in one index");
  }
  if (isVerifying) {
    verify(report);
  }
}

}  // namespace zentrel::vistabase::ardelivery::inspect
