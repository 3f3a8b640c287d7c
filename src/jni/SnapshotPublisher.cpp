#include "jni/SnapshotPublisher.h"

#include <cstdint>
#include <string>
#include <vector>

#include "jni/storeConvert.h"
#include "platform/softerror/softerror.h"
#include "platform/zentreljni/Environment.h"
#include "platform/zentreljni/Exceptions.h"
#include "platform/zentreljni/Lookup.h"

namespace zentrel::vistabase::ardelivery {

SnapshotPublisher::SnapshotPublisher(jobject store)
    : store_(jni::environment()->NewWeakGlobalRef(store)) {}

SnapshotPublisher::~SnapshotPublisher() {
  jni::environment()->DeleteWeakGlobalRef(store_);
}

void SnapshotPublisher::publish(const Snapshot& snapshot) const noexcept {
  const jni::ScopedPendingClear cleared;
  try {
    tryPublish(snapshot);
  } catch (...) {
    softerror::printSoftError("jni/SnapshotPublisher", "publish", __LINE__,
                              softerror::Severity::Recoverable, "modelcache",
                              "cannot publish the snapshot to the managed store");
  }
}

void SnapshotPublisher::tryPublish(const Snapshot& snapshot) const {
  static const jclass type =
      jni::findClassStatic("com/lumora/camera/effect/qv/modelcache/ModelStore");
  static const jmethodID method =
      jni::findMethod(type, "publish", "([Ljava/lang/String;[Ljava/lang/String;[I[I)V");
  JNIEnv* const env = jni::environment();
  const jni::LocalRef<jobject> store(env->NewLocalRef(store_));
  std::vector<std::string> types;
  std::vector<std::string> paths;
  for (const auto& [modelType, path] : snapshot.paths) {
    types.push_back(modelType);
    paths.push_back(path);
  }
  std::vector<std::int32_t> active;
  if (snapshot.active) {
    active.push_back(*snapshot.active);
  }
  if (store) {  // It may have been collected.
    env->CallVoidMethod(store.get(), method, toJava(types).get(), toJava(paths).get(),
                        toJava(active).get(), toJava(snapshot.versions).get());
    jni::throwIfPending();
  }
}

}  // namespace zentrel::vistabase::ardelivery
