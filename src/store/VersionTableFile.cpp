#include "store/VersionTableFile.h"

#include <memory>
#include <stdexcept>
#include <utility>

#include "delivery/FileNames.h"
#include "store/CapabilityJson.h"
#include "store/CheckedDocument.h"
#include "store/StoreError.h"
#include "store/fileTrees.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {
namespace {

boost::json::object toJson(const Version& version) {
  boost::json::array files;
  for (const VersionFile& file : version.files) {
    files.push_back(boost::json::object{{"type", file.file.type()},
                                        {"size", file.file.sizeBytes()},
                                        {"sha256", file.file.sha256()},
                                        {"name", file.name}});
  }
  return {{"version", version.number}, {"files", std::move(files)}};
}

/// Accepts only names of entries: a forged table must not lead the store to any other file.
std::string toName(const JsonValue& value) {
  std::string name = json::toString(value);
  if (name.empty() || name.size() > kLongestFileName || !isEntryName(name) ||
      name.find('/') != std::string::npos || name.find('\0') != std::string::npos) {
    throw json::Error("not the name of a model file");
  }
  return name;
}

VersionFile toFile(const JsonValue& value) {
  try {
    return {ModelFile(json::member(value, "type", &json::toString),
                      json::member(value, "size", &json::toInt64),
                      json::member(value, "sha256", &json::toString)),
            json::member(value, "name", &toName)};
  } catch (const std::invalid_argument& error) {
    throw json::Error(error.what());
  }
}

Version toVersion(const JsonValue& value) {
  Version version{json::member(value, "version", &json::toInt32), {}};
  json::forEach(value, "files",
                [&version](const JsonValue& file) { version.files.push_back(toFile(file)); });
  return version;
}

void requireConsistent(const VersionTable& table) {
  std::map<std::string, std::string> digests;
  std::set<int> numbers;
  for (const auto& version : table.versions) {
    if (!numbers.insert(version->number).second) {
      throw json::Error(joined("duplicate version ", version->number));
    }
    for (const VersionFile& file : version->files) {
      const std::string& digest = file.file.sha256();
      if (digests.emplace(file.name, digest).first->second != digest) {
        throw json::Error("different digests for " + file.name);
      }
    }
  }
  if (table.active && numbers.count(*table.active) == 0) {
    throw json::Error("the active version is missing");
  }
}

}  // namespace

std::optional<StoredTable> VersionTableFile::read(IDirectory& root) {
  const std::optional<std::string> text = readSmallFile(root, kTableName);
  if (!text) {
    return std::nullopt;
  }
  const JsonValue document = parseChecked(*text);
  const boost::json::object& members = document.get_object();
  StoredTable stored{{capabilityOf(document)}, {}};
  json::forEach(document, "versions", [&stored](const JsonValue& version) {
    stored.table.versions.push_back(std::make_shared<const Version>(toVersion(version)));
  });
  json::forEach(document, "damaged", [&stored](const JsonValue& name) {
    stored.table.damaged.insert(json::toString(name));
  });
  if (members.contains("active")) {
    stored.table.active = json::member(document, "active", &json::toInt32);
  }
  if (members.contains("index")) {
    const std::int64_t sum = json::member(document, "index", &json::toInt64);
    stored.indexCrc = static_cast<std::uint32_t>(sum);
  }
  requireConsistent(stored.table);
  return stored;
}

std::string VersionTableFile::print(const StoredTable& stored) {
  boost::json::object members;
  addCapability(members, stored.table.capability);
  boost::json::array versions;
  for (const auto& version : stored.table.versions) {
    versions.push_back(toJson(*version));
  }
  members["versions"] = std::move(versions);
  if (stored.table.active) {
    members["active"] = *stored.table.active;
  }
  const std::set<std::string>& damaged = stored.table.damaged;
  members["damaged"] = boost::json::array(damaged.begin(), damaged.end());
  if (stored.indexCrc) {
    members["index"] = *stored.indexCrc;
  }
  std::string text = printChecked(members);
  if (text.size() > static_cast<std::size_t>(kLargestOwnFile)) {
    throw StoreError(StoreError::Reason::NoRoom,
                     joined("the table of versions would have ", text.size(), " bytes, more than ",
                            kLargestOwnFile, "; delete versions first"),
                     kTableName);
  }
  return text;
}

void VersionTableFile::write(IDirectory& root, const StoredTable& stored) {
  replaceFile(root, kTableName, print(stored), Durability::Synced);
}

}  // namespace zentrel::vistabase::ardelivery
