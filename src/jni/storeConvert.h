#pragma once

#include <jni.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "jni/Convert.h"
#include "platform/zentreljni/Lookup.h"
#include "store/ModelStore.h"

namespace zentrel::vistabase::ardelivery {

/// A managed byte array, of which a native method copies what it needs.
template <>
struct Convert<jbyteArray> {
  using Jni = jbyteArray;
  static Jni fromJni(Jni value, const char* name) {
    jni::requireNonNull(value, name);
    return value;
  }
};

/// A managed object that is not converted.
template <>
struct Convert<jobject> {
  using Jni = jobject;
  static Jni fromJni(Jni value, const char* name) {
    jni::requireNonNull(value, name);
    return value;
  }
};

/// Managed arrays of several types, which a native method returns together.
using Parts = std::vector<jni::LocalRef<jobject>>;

template <>
struct Convert<Parts> {
  using Jni = jobjectArray;
  static jni::LocalRef<jobjectArray> toJni(const Parts& parts) {
    static const jclass type = jni::findClassStatic("java/lang/Object");
    JNIEnv* const env = jni::environment();
    const auto length = static_cast<jsize>(parts.size());
    if (length == 0) {
      return {};
    }
    auto array = jni::checkedLocal(env->NewObjectArray(length, type, nullptr));
    for (jsize i = 0; i < length; ++i) {
      env->SetObjectArrayElement(array.get(), i, parts[static_cast<std::size_t>(i)].get());
      jni::throwIfPending();
    }
    return array;
  }
};

/// Converts a value to a managed object.
template <class T>
jni::LocalRef<jobject> toJava(const T& value) {
  return Convert<T>::toJni(value);
}

/// Model files, as arrays of their types, sizes and digests.
template <>
struct Convert<std::vector<ModelFile>> {
  using Jni = jobjectArray;
  static Parts toParts(const std::vector<ModelFile>& files) {
    std::vector<std::string> types;
    std::vector<std::string> digests;
    std::vector<std::int64_t> sizes;
    for (const ModelFile& file : files) {
      types.push_back(file.type());
      sizes.push_back(file.sizeBytes());
      digests.push_back(file.sha256());
    }
    Parts parts;
    parts.push_back(toJava(types));
    parts.push_back(toJava(sizes));
    parts.push_back(toJava(digests));
    return parts;
  }

  static jni::LocalRef<jobjectArray> toJni(const std::vector<ModelFile>& files) {
    return Convert<Parts>::toJni(toParts(files));
  }
};

/// The same, with an array of their paths.
template <>
struct Convert<std::vector<StoredModelFile>> {
  using Jni = jobjectArray;
  static jni::LocalRef<jobjectArray> toJni(const std::vector<StoredModelFile>& stored) {
    std::vector<ModelFile> files;
    std::vector<std::string> paths;
    for (const StoredModelFile& each : stored) {
      files.push_back(each.file);
      paths.push_back(each.path);
    }
    Parts parts = Convert<std::vector<ModelFile>>::toParts(files);
    parts.push_back(toJava(paths));
    return Convert<Parts>::toJni(parts);
  }
};

}  // namespace zentrel::vistabase::ardelivery
