#include "jni/JavaDigest.h"

#include <algorithm>
#include <new>

#include "jni/Convert.h"
#include "platform/zentreljni/Lookup.h"

namespace zentrel::vistabase::ardelivery {
namespace {

constexpr jsize kChunk = 1 << 16;  // Bytes passed per call.

/// Owns a global reference.
template <class T>
class GlobalRef {
 public:
  explicit GlobalRef(const jni::LocalRef<T>& local)
      : reference_(static_cast<T>(jni::environment()->NewGlobalRef(local.get()))) {
    if (reference_ == nullptr) {
      throw std::bad_alloc();
    }
  }
  GlobalRef(const GlobalRef&) = delete;
  GlobalRef& operator=(const GlobalRef&) = delete;
  ~GlobalRef() { jni::environment()->DeleteGlobalRef(reference_); }

  T get() const noexcept { return reference_; }

 private:
  const T reference_;
};

struct MessageDigest {
  jclass type = jni::findClassStatic("java/security/MessageDigest");
  jmethodID getInstance = jni::findStaticMethod(
      type, "getInstance", "(Ljava/lang/String;)Ljava/security/MessageDigest;");
  jmethodID update = jni::findMethod(type, "update", "([BII)V");
  jmethodID digest = jni::findMethod(type, "digest", "()[B");

  static const MessageDigest& instance() {
    static const MessageDigest found;
    return found;
  }
};

jni::LocalRef<jobject> newSha256() {
  const MessageDigest& java = MessageDigest::instance();
  const auto name = jni::make_jstring("SHA-256");
  return jni::checkedLocal(
      jni::environment()->CallStaticObjectMethod(java.type, java.getInstance, name.get()));
}

class JavaDigest final : public Digest {
 public:
  JavaDigest()
      : digest_(newSha256()), chunk_(jni::checkedLocal(jni::environment()->NewByteArray(kChunk))) {}

  void update(const void* bytes, std::size_t count) override {
    JNIEnv* const env = jni::environment();
    const auto* next = static_cast<const jbyte*>(bytes);
    while (count > 0) {
      const auto length = static_cast<jsize>(std::min<std::size_t>(count, kChunk));
      env->SetByteArrayRegion(chunk_.get(), 0, length, next);
      env->CallVoidMethod(digest_.get(), MessageDigest::instance().update, chunk_.get(), 0, length);
      jni::throwIfPending();
      next += length;
      count -= static_cast<std::size_t>(length);
    }
  }

  std::string finish() override {
    const auto bytes = jni::checkedLocal(static_cast<jbyteArray>(
        jni::environment()->CallObjectMethod(digest_.get(), MessageDigest::instance().digest)));
    const auto digest = Convert<std::vector<std::uint8_t>>::fromJni(bytes.get(), "digest");
    return toHex(digest.data(), digest.size());
  }

 private:
  const GlobalRef<jobject> digest_;
  const GlobalRef<jbyteArray> chunk_;
};

}  // namespace

std::unique_ptr<Digest> newJavaDigest() {
  return std::make_unique<JavaDigest>();
}

}  // namespace zentrel::vistabase::ardelivery
