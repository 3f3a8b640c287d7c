#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace zentrel::vistabase::ardelivery {

/// A SHA-256 digest on its way. One thread at a time.
class Digest {
 public:
  virtual ~Digest() = default;

  virtual void update(const void* bytes, std::size_t count) = 0;
  /// The digest of all bytes so far, in 64 hexadecimal digits, lower case. Nothing may follow.
  virtual std::string finish() = 0;
};

/// Makes a digest of no bytes.
using NewDigest = std::function<std::unique_ptr<Digest>()>;

/// Bytes in hexadecimal digits, lower case.
std::string toHex(const unsigned char* bytes, std::size_t count);

/// A digest that a caller gives, in lower case. Throws std::invalid_argument unless it has 64
/// hexadecimal digits.
std::string requireDigest(std::string digest);

/// Whether a text is a digest as `finish` gives it.
bool isDigest(std::string_view text) noexcept;

/// How long the text of a digest is.
constexpr std::size_t kDigestLength = 64;

}  // namespace zentrel::vistabase::ardelivery
