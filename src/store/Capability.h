#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zentrel::vistabase::ardelivery {

/// What a set of models is for, and the file types that it consists of. A version is complete once
/// it has one file of each type. Compares by value.
class Capability {
 public:
  static Capability faceTracking();  ///< Four files; named "FACE_TRACKING".
  static Capability segmentation();  ///< Two files; named "SEGMENTATION".

  /// A custom capability. The name and the types consist of letters, digits, "-", "_" and ".", do
  /// not begin with a dot, and have at most 180 characters each. There are 1 to 64 types, all
  /// distinct. Throws std::invalid_argument otherwise, and if the name is a predefined one with
  /// different types.
  static Capability of(std::string name, std::vector<std::string> types);

  const std::string& name() const noexcept { return name_; }  ///< Such as "FACE_TRACKING".
  /// The types of its files, in their fixed order.
  const std::vector<std::string>& types() const& noexcept { return types_; }
  std::vector<std::string> types() && { return std::move(types_); }  ///< For a temporary.

  /// Whether `type` is one of its types.
  bool hasType(const std::string& type) const noexcept;
  /// "NAME (TYPE, ...)".
  std::string toString() const;

  /// By value.
  friend bool operator==(const Capability& left, const Capability& right) noexcept {
    return left.name_ == right.name_ && left.types_ == right.types_;
  }
  /// By value.
  friend bool operator!=(const Capability& left, const Capability& right) noexcept {
    return !(left == right);
  }

 private:
  Capability(std::string name, std::vector<std::string> types) noexcept;

  std::string name_;
  std::vector<std::string> types_;
};

/// The type, size and digest that a model file must have. Compares by value.
class ModelFile {
 public:
  /// `type` is one of the capability's, `sha256` the digest of the file's bytes in 64 hexadecimal
  /// digits. Throws std::invalid_argument for a negative size or a malformed digest.
  ModelFile(std::string type, std::int64_t sizeBytes, std::string sha256);

  const std::string& type() const noexcept { return type_; }      ///< A type of the capability.
  std::int64_t sizeBytes() const noexcept { return sizeBytes_; }  ///< Not negative.
  const std::string& sha256() const noexcept { return sha256_; }  ///< In lower case.

  /// "TYPE, SIZE bytes, DIGEST".
  std::string toString() const;

  /// By value.
  friend bool operator==(const ModelFile& left, const ModelFile& right) noexcept {
    return left.type_ == right.type_ && left.sizeBytes_ == right.sizeBytes_ &&
           left.sha256_ == right.sha256_;
  }
  /// By value.
  friend bool operator!=(const ModelFile& left, const ModelFile& right) noexcept {
    return !(left == right);
  }

 private:
  std::string type_;
  std::int64_t sizeBytes_;
  std::string sha256_;
};

}  // namespace zentrel::vistabase::ardelivery
