#include "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging.h"

#include <exception>
#include <utility>

#include "platform/softerror/softerror.h"

namespace zentrel::vistabase::ardelivery {
namespace {

/// The texts with which an operation reports failures. Spelled out because compilers print
/// signatures differently, but reports from all builds of an app are counted together.
struct ReportTexts {
  const char* function;
  const char* format;
  const char* unknownError;
};

#define REPORT_TEXTS(result, signature, label)                                                  \
  ReportTexts {                                                                                 \
    "virtual " result " zentrel::vistabase::ardelivery::FileCacheWithErrorLogging::" signature, \
        "Error for " label ": %s", "Error for " label ": unknown error"                         \
  }

constexpr ReportTexts kInsertAndLock = REPORT_TEXTS(
    "std::shared_ptr<FileCacheEntry>", "insertAndLock(const std::string &)", "insertAndLock");
constexpr ReportTexts kCommit = REPORT_TEXTS("void", "commit(const std::string &)", "commit");
constexpr ReportTexts kCommitSize =
    REPORT_TEXTS("void", "commit(const std::string &, int64_t)", "commit");
constexpr ReportTexts kUnlock = REPORT_TEXTS("void", "unlock(const std::string &)", "unlock");
constexpr ReportTexts kGetCacheEntry = REPORT_TEXTS(
    "std::shared_ptr<FileCacheEntry>", "getCacheEntry(const std::string &)", "getCacheEntry");
constexpr ReportTexts kGetCacheEntryWithoutPromotion = REPORT_TEXTS(
    "std::shared_ptr<FileCacheEntry>", "getCacheEntryWithoutPromotion(const std::string &)",
    "getCacheEntryWithoutPromotion");
constexpr ReportTexts kUpdateExtra = REPORT_TEXTS(
    "bool", "updateExtra(const std::string &, zentrel::vistabase::ardelivery::BytesVector &&)",
    "updateExtra");
constexpr ReportTexts kGetAllMetas = REPORT_TEXTS(
    "std::vector<std::pair<std::string, FileCacheEntryMeta> >", "getAllMetas()", "getAllMetas");
constexpr ReportTexts kMemContains = REPORT_TEXTS(
    "IFileCache::MemContainsStatus", "memContains(const std::string &)", "memContains");
constexpr ReportTexts kRemove = REPORT_TEXTS("bool", "remove(const std::string &)", "remove");
constexpr ReportTexts kGetSize = REPORT_TEXTS("int64_t", "getSize()", "getSize");
constexpr ReportTexts kClear = REPORT_TEXTS("void", "clear()", "clear");
constexpr ReportTexts kFlushExtra = REPORT_TEXTS("void", "flushExtra()", "flush");

#undef REPORT_TEXTS

constexpr const char* kFile =
    "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging";
constexpr const char* kCategory = "tessel";
constexpr softerror::Severity kSeverity = softerror::Severity::Recoverable;

template <class Result>
Result neutralValue() {
  return Result();
}

template <>
IFileCache::MemContainsStatus neutralValue() {
  return IFileCache::MemContainsStatus::Unknown;
}

// The formats come from the table above, which the compiler cannot see from here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"

/// Forwards a call to the wrapped cache. The reference's own null check is outside the try block,
/// since it reports by itself and throws nothing.
template <class Call>
auto guard(const quovix::shared_ref<IFileCache>& reference, const ReportTexts& texts,
           const Call& call) noexcept -> decltype(call(std::declval<IFileCache&>())) {
  IFileCache* const cache = reference.get();
  try {
    return call(*cache);
  } catch (const std::exception& error) {
    softerror::printSoftError(kFile, texts.function, __LINE__, kSeverity, kCategory, texts.format,
                              error.what());
  } catch (...) {
    softerror::printSoftError(kFile, texts.function, __LINE__, kSeverity, kCategory,
                              texts.unknownError);
  }
  return neutralValue<decltype(call(*cache))>();
}

#pragma GCC diagnostic pop

}  // namespace

FileCacheWithErrorLogging::FileCacheWithErrorLogging(quovix::shared_ref<IFileCache> cache) noexcept
    : cache_(std::move(cache)) {}

std::shared_ptr<FileCacheEntry> FileCacheWithErrorLogging::insertAndLock(const std::string& key) {
  return guard(cache_, kInsertAndLock, [&](IFileCache& cache) { return cache.insertAndLock(key); });
}

void FileCacheWithErrorLogging::commit(const std::string& key) {
  guard(cache_, kCommit, [&](IFileCache& cache) { cache.commit(key); });
}

void FileCacheWithErrorLogging::commit(const std::string& key, std::int64_t size) {
  guard(cache_, kCommitSize, [&](IFileCache& cache) { cache.commit(key, size); });
}

void FileCacheWithErrorLogging::unlock(const std::string& key) {
  guard(cache_, kUnlock, [&](IFileCache& cache) { cache.unlock(key); });
}

std::shared_ptr<FileCacheEntry> FileCacheWithErrorLogging::getCacheEntry(const std::string& key) {
  return guard(cache_, kGetCacheEntry, [&](IFileCache& cache) { return cache.getCacheEntry(key); });
}

std::shared_ptr<FileCacheEntry> FileCacheWithErrorLogging::getCacheEntryWithoutPromotion(
    const std::string& key) {
  return guard(cache_, kGetCacheEntryWithoutPromotion,
               [&](IFileCache& cache) { return cache.getCacheEntryWithoutPromotion(key); });
}

bool FileCacheWithErrorLogging::updateExtra(const std::string& key, BytesVector&& extra) {
  return guard(cache_, kUpdateExtra,
               [&](IFileCache& cache) { return cache.updateExtra(key, std::move(extra)); });
}

std::vector<std::pair<std::string, FileCacheEntryMeta>> FileCacheWithErrorLogging::getAllMetas() {
  return guard(cache_, kGetAllMetas, [](IFileCache& cache) { return cache.getAllMetas(); });
}

IFileCache::MemContainsStatus FileCacheWithErrorLogging::memContains(const std::string& key) {
  return guard(cache_, kMemContains, [&](IFileCache& cache) { return cache.memContains(key); });
}

bool FileCacheWithErrorLogging::remove(const std::string& key) {
  return guard(cache_, kRemove, [&](IFileCache& cache) { return cache.remove(key); });
}

std::int64_t FileCacheWithErrorLogging::getSize() {
  return guard(cache_, kGetSize, [](IFileCache& cache) { return cache.getSize(); });
}

void FileCacheWithErrorLogging::clear() {
  guard(cache_, kClear, [](IFileCache& cache) { cache.clear(); });
}

void FileCacheWithErrorLogging::flushExtra() {
  guard(cache_, kFlushExtra, [](IFileCache& cache) { cache.flushExtra(); });
}

}  // namespace zentrel::vistabase::ardelivery
