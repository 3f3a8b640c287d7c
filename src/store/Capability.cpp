#include "store/Capability.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>

#include "delivery/ModelCache/FacetrackerModelCache.h"
#include "delivery/ModelCache/SegmentationModelCache.h"
#include "store/Digest.h"
#include "support/util/joined.h"

namespace zentrel::vistabase::ardelivery {
namespace {

constexpr std::size_t kLongestName = 180;
constexpr std::size_t kMostTypes = 64;

// Not the functions of <cctype>, which depend on the locale.
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool isNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || isDigit(c) || c == '-' || c == '_' ||
         c == '.';
}

void requireName(const std::string& name) {
  if (name.empty() || name.size() > kLongestName || name[0] == '.' ||
      !std::all_of(name.begin(), name.end(), &isNameCharacter)) {
    throw std::invalid_argument(
        joined("not 1 to ", kLongestName, R"( letters, digits, "-", "_" and ".": )", name));
  }
}

template <class Row, std::size_t Count>
std::vector<std::string> typesOf(const Row (&rows)[Count]) {
  std::vector<std::string> types;
  for (const Row& row : rows) {
    types.emplace_back(row.name);
  }
  return types;
}

}  // namespace

Capability::Capability(std::string name, std::vector<std::string> types) noexcept
    : name_(std::move(name)), types_(std::move(types)) {}

Capability Capability::faceTracking() {
  return {"FACE_TRACKING", typesOf(kFacetrackerModels)};
}

Capability Capability::segmentation() {
  return {"SEGMENTATION", typesOf(kSegmentationModels)};
}

Capability Capability::of(std::string name, std::vector<std::string> types) {
  requireName(name);
  if (types.empty() || types.size() > kMostTypes) {
    throw std::invalid_argument(
        joined("a capability has 1 to ", kMostTypes, " types, not ", types.size()));
  }
  for (auto type = types.begin(); type != types.end(); ++type) {
    requireName(*type);
    if (std::find(types.begin(), type, *type) != type) {
      throw std::invalid_argument("duplicate type: " + *type);
    }
  }
  Capability made(std::move(name), std::move(types));
  for (const Capability& known : {faceTracking(), segmentation()}) {
    if (made.name_ == known.name_ && made != known) {
      throw std::invalid_argument("predefined with other types: " + made.name_);
    }
  }
  return made;
}

bool Capability::hasType(const std::string& type) const noexcept {
  return std::find(types_.begin(), types_.end(), type) != types_.end();
}

std::string Capability::toString() const {
  std::string text = name_;
  for (const std::string& type : types_) {
    text += (&type == types_.data() ? " (" : ", ") + type;
  }
  return text + ")";
}

ModelFile::ModelFile(std::string type, std::int64_t sizeBytes, std::string sha256)
    : type_(std::move(type)), sizeBytes_(sizeBytes), sha256_(requireDigest(std::move(sha256))) {
  if (sizeBytes < 0) {
    throw std::invalid_argument(joined("negative size of ", type_, ": ", sizeBytes));
  }
}

std::string ModelFile::toString() const {
  return joined(type_, ", ", sizeBytes_, " bytes, ", sha256_);
}

}  // namespace zentrel::vistabase::ardelivery
