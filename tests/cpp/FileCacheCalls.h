#pragma once

#include <functional>
#include <string>

#include "delivery/FileCache/IFileCache.h"

namespace zentrel::vistabase::ardelivery {

/// An operation of the file cache: the start and the end of its signature, its name in reports, and
/// a call, which returns whether the result was the neutral one.
struct FileCacheCall {
  std::string result, signature, label;
  std::function<bool(IFileCache&, const std::string& key)> call;
};

inline const FileCacheCall kFileCacheCalls[] = {
    {"std::shared_ptr<FileCacheEntry>", "insertAndLock(const std::string &)", "insertAndLock",
     [](IFileCache& cache, auto& key) { return !cache.insertAndLock(key); }},
    {"void", "commit(const std::string &)", "commit",
     [](IFileCache& cache, auto& key) { return cache.commit(key), true; }},
    {"void", "commit(const std::string &, int64_t)", "commit",
     [](IFileCache& cache, auto& key) { return cache.commit(key, 1), true; }},
    {"void", "unlock(const std::string &)", "unlock",
     [](IFileCache& cache, auto& key) { return cache.unlock(key), true; }},
    {"std::shared_ptr<FileCacheEntry>", "getCacheEntry(const std::string &)", "getCacheEntry",
     [](IFileCache& cache, auto& key) { return !cache.getCacheEntry(key); }},
    {"std::shared_ptr<FileCacheEntry>", "getCacheEntryWithoutPromotion(const std::string &)",
     "getCacheEntryWithoutPromotion",
     [](IFileCache& cache, auto& key) { return !cache.getCacheEntryWithoutPromotion(key); }},
    {"bool", "updateExtra(const std::string &, zentrel::vistabase::ardelivery::BytesVector &&)",
     "updateExtra", [](IFileCache& cache, auto& key) { return !cache.updateExtra(key, {}); }},
    {"std::vector<std::pair<std::string, FileCacheEntryMeta> >", "getAllMetas()", "getAllMetas",
     [](IFileCache& cache, auto&) { return cache.getAllMetas().empty(); }},
    {"IFileCache::MemContainsStatus", "memContains(const std::string &)", "memContains",
     [](IFileCache& cache, auto& key) {
       return cache.memContains(key) == IFileCache::MemContainsStatus(2);
     }},
    {"bool", "remove(const std::string &)", "remove",
     [](IFileCache& cache, auto& key) { return !cache.remove(key); }},
    {"int64_t", "getSize()", "getSize",
     [](IFileCache& cache, auto&) { return cache.getSize() == 0; }},
    {"void", "clear()", "clear", [](IFileCache& cache, auto&) { return cache.clear(), true; }},
    {"void", "flushExtra()", "flush",
     [](IFileCache& cache, auto&) { return cache.flushExtra(), true; }},
};

}  // namespace zentrel::vistabase::ardelivery
