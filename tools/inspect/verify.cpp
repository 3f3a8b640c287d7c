#include <openssl/evp.h>
#include <unistd.h>

#include <boost/algorithm/hex.hpp>
#include <cstdio>
#include <fstream>
#include <memory>
#include <set>

#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
namespace {

using Context = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;

/// The file's digest in hexadecimal digits, lower case; none if it cannot be read.
std::optional<std::string> sha256Of(const std::string& path) {
  const Context context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
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

}  // namespace

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
    const std::optional<std::string> digest = sha256Of(report.root + '/' + name);
    if (digest != sha256) {
      report.find(name, digest ? "differs from its recorded digest" : "cannot be read");
    }
    ++*report.verifiedFiles;
  }
  if (isTerminal) {
    std::fputs("\r\x1b[K", stderr);
  }
}

}  // namespace zentrel::vistabase::ardelivery::inspect
