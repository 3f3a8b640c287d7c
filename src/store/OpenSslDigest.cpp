#include "store/OpenSslDigest.h"

#include <openssl/evp.h>

#include <new>
#include <stdexcept>

namespace zentrel::vistabase::ardelivery {
namespace {

void require(int result) {
  if (result != 1) {
    throw std::runtime_error("libcrypto failed to compute a SHA-256 digest");
  }
}

class OpenSslDigest final : public Digest {
 public:
  OpenSslDigest() : context_(EVP_MD_CTX_new(), &EVP_MD_CTX_free) {
    if (!context_) {
      throw std::bad_alloc();
    }
    require(EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr));
  }

  void update(const void* bytes, std::size_t count) override {
    require(EVP_DigestUpdate(context_.get(), bytes, count));
  }
  std::string finish() override {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    require(EVP_DigestFinal_ex(context_.get(), digest, &length));
    return toHex(digest, length);
  }

 private:
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_;
};

}  // namespace

std::unique_ptr<Digest> newOpenSslDigest() {
  return std::make_unique<OpenSslDigest>();
}

}  // namespace zentrel::vistabase::ardelivery
