#pragma once

#include <jni.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "delivery/FileCache/FileCacheEntry.h"
#include "delivery/FileCache/FileCacheEntryMeta.h"
#include "platform/zentreljni/Convert.h"

/// How the results of the file cache cross the border.
namespace zentrel::jni {

/// A managed ARDFileCacheEntry with the entry's path, or null for null.
template <>
struct Convert<std::shared_ptr<vistabase::ardelivery::FileCacheEntry>> {
  using Jni = jobject;
  static LocalRef<jobject> toJni(
      const std::shared_ptr<vistabase::ardelivery::FileCacheEntry>& entry);
};

/// A managed array of Map.Entry, from each key to its ARDFileResourceMeta.
template <>
struct Convert<std::vector<std::pair<std::string, vistabase::ardelivery::FileCacheEntryMeta>>> {
  using Jni = jobjectArray;
  static LocalRef<jobjectArray> toJni(
      const std::vector<std::pair<std::string, vistabase::ardelivery::FileCacheEntryMeta>>& metas);
};

}  // namespace zentrel::jni
