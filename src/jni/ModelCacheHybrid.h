#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "delivery/ModelCache/CapabilityModel.h"
#include "jni/FileCacheHybrid.h"
#include "platform/zentreljni/Exceptions.h"
#include "support/util/ErrorTexts.h"
#include "support/util/memory/shared_ref.h"

namespace zentrel::vistabase::ardelivery {

/// Argument names and descriptors shared by the native methods of all model caches.
namespace modelcache {

constexpr char kFileCache[] = "fileCache";
constexpr char kVersion[] = "version";
constexpr char kCacheKey[] = "cacheKey";
constexpr char kTypeName[] = "typeName";

constexpr const char* kInitHybrid =
    "(Lcom/zentrel/vistabase/assets/tesselcache/ARDFileCache;)Lcom/zentrel/jni/HybridData;";
constexpr const char* kGetPath = "(I)Ljava/lang/String;";
constexpr const char* kAddModel = "(ILjava/lang/String;Ljava/lang/String;)Z";
constexpr const char* kTrim = "(I)V";

}  // namespace modelcache

/// Raises whatever the body of a model cache's native method throws as the managed
/// EffectsFrameworkException. A managed exception that is already pending is left alone.
template <class Body>
auto raiseDescribed(const ErrorTexts& texts, const Body& body) -> decltype(body()) {
  constexpr const char* exceptionClass =
      "com/zentrel/vistabase/common/exception/EffectsFrameworkException";
  try {
    return body();
  } catch (const jni::PendingJavaException&) {
    throw;
  } catch (const std::exception& error) {
    jni::throwNewJavaException(exceptionClass, texts(error.what()));
  } catch (...) {
    jni::throwNewJavaException(exceptionClass, texts(nullptr));
  }
}

/// The native peer of a managed model cache. `Cache` is one of the final model caches, `Paths` its
/// path record.
template <class Cache, class Paths>
class ModelCacheHybrid final : public CacheHybrid {
 public:
  /// Creates a model cache over the file cache of the given peer.
  static std::unique_ptr<ModelCacheHybrid> make(const jni::Pinned<FileCacheHybrid>& fileCache) {
    return std::make_unique<ModelCacheHybrid>(
        fileCache->threadGuard(),
        quovix::make_shared_ref<Cache>(fileCache->getFileCache().pointer()));
  }

  ModelCacheHybrid(std::shared_ptr<SingleThreadGuard> threadGuard,
                   quovix::shared_ref<Cache> cache) noexcept
      : CacheHybrid(std::move(threadGuard)), cache_(std::move(cache)) {}

  /// Returns one field of the version's path record, or "" if a file of the version is missing.
  template <std::string Paths::*Path, const ErrorTexts& Errors>
  std::string getPath(std::int32_t version) {
    return raiseDescribed(Errors, [&] {
      const std::shared_ptr<Paths> paths = cache_->getModelPaths(version);
      return paths ? (*paths).*Path : std::string();
    });
  }

  template <const ErrorTexts& Errors>
  bool addModelForVersionIfInCache(std::int32_t version, const std::string& cacheKey,
                                   const std::string& typeName) {
    return raiseDescribed(Errors, [&] {
      const auto model =
          quovix::make_shared_ref<CapabilityModel>(CapabilityModel{cacheKey, typeName});
      return cache_->addModelForVersionIfInCache(version, *model);
    });
  }

  template <const ErrorTexts& Errors>
  void trimExceptVersion(std::int32_t version) {
    raiseDescribed(Errors, [&] { cache_->trimExceptVersion(version); });
  }

 private:
  quovix::shared_ref<Cache> cache_;
};

}  // namespace zentrel::vistabase::ardelivery
