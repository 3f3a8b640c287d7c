#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace zentrel::vistabase::ardelivery {

/// A SHA-256 computation. One thread at a time.
class Digest {
 public:
  virtual ~Digest() = default;

  virtual void update(const void* bytes, std::size_t count) = 0;
  /// Returns the digest as 64 lower-case hexadecimal digits. Must be the last call.
  virtual std::string finish() = 0;
};

/// Starts a digest.
using NewDigest = std::function<std::unique_ptr<Digest>()>;

/// Formats bytes as lower-case hexadecimal digits.
std::string toHex(const unsigned char* bytes, std::size_t count);

/// Returns a caller's digest in lower case. Throws std::invalid_argument unless it is 64
/// hexadecimal digits.
std::string requireDigest(std::string digest);

/// Whether the text is a digest as `finish` returns it.
bool isDigest(std::string_view text) noexcept;

/// In hexadecimal digits.
constexpr std::size_t kDigestLength = 64;

}  // namespace zentrel::vistabase::ardelivery
