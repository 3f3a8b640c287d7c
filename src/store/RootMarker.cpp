#include "store/RootMarker.h"

#include <algorithm>
#include <exception>

#include "delivery/FileNames.h"
#include "store/CapabilityJson.h"
#include "store/CheckedDocument.h"
#include "store/VersionIndex.h"
#include "store/VersionTableFile.h"
#include "store/fileTrees.h"

namespace zentrel::vistabase::ardelivery {

bool RootContent::isCompatibleWith(const RootContent& other) const {
  if (types.empty() || !other.capability) {
    return types.empty() && capability == other.capability;
  }
  return std::all_of(types.begin(), types.end(),
                     [&other](const std::string& type) { return other.capability->hasType(type); });
}

std::string RootContent::toString() const {
  if (types.empty()) {
    return capability ? "models of " + capability->toString() : "files";
  }
  std::string text = "models of the types";
  for (const std::string& type : types) {
    text += &type == types.data() ? " " : ", ";
    text += type;
  }
  return text;
}

std::optional<RootContent> RootMarker::read(IDirectory& root) {
  const std::optional<std::string> text = readSmallFile(root, kMarkerName);
  if (!text) {
    return std::nullopt;
  }
  const JsonValue document = parseChecked(*text);
  const std::string holds = json::member(document, "holds", &json::toString);
  if (holds == "models") {
    return RootContent{capabilityOf(document)};
  }
  if (holds != "files") {
    throw json::Error(R"(holds: neither "files" nor "models")");
  }
  return RootContent{};
}

void RootMarker::write(IDirectory& root, const RootContent& content) {
  boost::json::object members{{"holds", content.capability ? "models" : "files"}};
  if (content.capability) {
    addCapability(members, *content.capability);
  }
  replaceFile(root, kMarkerName, printChecked(members), Durability::Synced);
}

std::optional<RootContent> identifyRoot(IDirectory& root) {
  try {
    if (const auto stored = VersionTableFile::read(root)) {
      return RootContent{stored->table.capability};
    }
  } catch (const std::exception&) {
    // Fall back on the index.
  }
  RootContent content;
  try {
    for (const IndexedVersion& version : readIndex(readSmallFile(root, kIndexName).value_or(""))) {
      for (const IndexedVersion::File& file : version.files) {
        content.types.push_back(file.type);
      }
    }
  } catch (const std::exception&) {
    // Not a store's index.
  }
  return content.types.empty() ? std::nullopt : std::optional(content);
}

}  // namespace zentrel::vistabase::ardelivery
