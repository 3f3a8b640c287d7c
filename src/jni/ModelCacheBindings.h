#pragma once

/// The names and descriptors that the natives of all model caches share.
namespace zentrel::vistabase::ardelivery::modelcache {

constexpr char kFileCache[] = "fileCache";
constexpr char kVersion[] = "version";
constexpr char kCacheKey[] = "cacheKey";
constexpr char kTypeName[] = "typeName";

constexpr const char* kInitHybrid =
    "(Lcom/zentrel/vistabase/assets/tesselcache/ARDFileCache;)Lcom/zentrel/jni/HybridData;";
constexpr const char* kGetPath = "(I)Ljava/lang/String;";
constexpr const char* kAddModel = "(ILjava/lang/String;Ljava/lang/String;)Z";
constexpr const char* kTrim = "(I)V";

}  // namespace zentrel::vistabase::ardelivery::modelcache
