#include "store/recoverVersions.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "delivery/FileNames.h"
#include "store/PartWriter.h"
#include "store/StoreError.h"
#include "store/VersionIndex.h"
#include "store/fileTrees.h"

namespace zentrel::vistabase::ardelivery {
namespace {

bool hasDigest(StoreRoot& root, const std::string& name, const std::string& sha256) {
  if (!root.directory().status(name).isRegular()) {
    return false;
  }
  const auto digest = root.newDigest();
  try {
    digestFile(*root.directory().openForReading(name), *digest, [] {});
    return digest->finish() == sha256;
  } catch (const StoreError& error) {
    if (error.error() != EIO) {
      throw;
    }
    return false;
  }
}

}  // namespace

VersionTable recoverVersions(StoreRoot& root, const Capability& capability) {
  std::vector<IndexedVersion> versions;
  root.readOwnFile(kIndexName, [&] {
    versions = readIndex(readSmallFile(root.directory(), kIndexName).value_or(""));
  });
  Versions intact;
  std::map<std::string, bool> checked;
  for (const IndexedVersion& indexed : versions) {
    Version version{indexed.number, {}};
    std::vector<std::string> types;
    bool isIntact = true;
    for (const auto& [type, sha256, name] : indexed.files) {
      types.push_back(type);
      const auto [known, isNew] = checked.emplace(name, false);
      if (isNew) {
        known->second = hasDigest(root, name, sha256);
      }
      isIntact = isIntact && known->second;
      version.files.push_back({{type, root.directory().status(name).size, sha256}, name});
    }
    if (isIntact && types == capability.types()) {
      intact.push_back(std::make_shared<const Version>(std::move(version)));
    }
  }
  VersionTable table{capability};
  std::set<int> numbers;
  for (auto version = intact.rbegin(); version != intact.rend(); ++version) {
    if (numbers.insert((*version)->number).second) {  // Of several with a number, the last.
      table.versions.push_back(*version);
    }
  }
  std::reverse(table.versions.begin(), table.versions.end());
  if (!table.versions.empty()) {
    table.active = table.versions.back()->number;
    root.report("recovered the versions from the index");
  }
  return table;
}

}  // namespace zentrel::vistabase::ardelivery
