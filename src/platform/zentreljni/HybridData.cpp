#include "platform/zentreljni/HybridData.h"

#include <cstdint>
#include <mutex>

#include "platform/zentreljni/Exceptions.h"
#include "platform/zentreljni/Lookup.h"

namespace zentrel::jni {
namespace {

constexpr const char* kHybridClassBase = "com/zentrel/jni/HybridClassBase";
constexpr const char* kHybridData = "com/zentrel/jni/HybridData";
constexpr const char* kDestructor = "com/zentrel/jni/HybridData$Destructor";
constexpr const char* kDestructorDescriptor = "Lcom/zentrel/jni/HybridData$Destructor;";
constexpr const char* kNullPointerException = "java/lang/NullPointerException";

LocalRef<jobject> create() {
  static const JavaConstructor constructor(kHybridData, "()V");
  return constructor();
}

LocalRef<jobject> destructorOf(jobject hybridData) {
  static const jfieldID field = findField(kHybridData, "mDestructor", kDestructorDescriptor);
  return LocalRef<jobject>(environment()->GetObjectField(hybridData, field));
}

jfieldID pointerField() {
  static const jfieldID field = findField(kDestructor, "mNativePointer", "J");
  return field;
}

HybridBase* toPeer(jlong pointer) {
  return reinterpret_cast<HybridBase*>(static_cast<std::intptr_t>(pointer));
}

void setNativePointer(jobject destructor, std::unique_ptr<HybridBase> peer) {
  const jfieldID field = pointerField();
  environment()->SetLongField(destructor, field,
                              static_cast<jlong>(reinterpret_cast<std::intptr_t>(peer.release())));
}

/// Held from reading a pointer to pinning its peer, and by deleteNative, so that a peer cannot be
/// deleted in between. Not held during calls, nor while deleting a peer. The mutex itself is never
/// destroyed, since the collector's thread keeps running during exit.
std::mutex& pinning() {
  static std::mutex& mutex = *new std::mutex;
  return mutex;
}

}  // namespace

LocalRef<jobject> HybridData::own(std::unique_ptr<HybridBase> peer) {
  LocalRef<jobject> hybridData = create();
  const LocalRef<jobject> destructor = destructorOf(hybridData.get());
  setNativePointer(destructor.get(), std::move(peer));
  return hybridData;
}

void Unpin::operator()(HybridBase* peer) const noexcept {
  if (peer->owners_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    delete peer;
  }
}

Pinned<HybridBase> HybridData::pin(jobject destructor) {
  const jfieldID field = pointerField();
  const std::lock_guard<std::mutex> lock(pinning());
  HybridBase* const peer = toPeer(environment()->GetLongField(destructor, field));
  if (peer != nullptr) {
    peer->owners_.fetch_add(1, std::memory_order_relaxed);
  }
  return Pinned<HybridBase>(peer);
}

void HybridData::deleteNative(JNIEnv* env, jclass, jlong pointer) noexcept {
  const JniEnvCacher cacher(env);
  const Pinned<HybridBase> owned(toPeer(pointer));
  // Once this is locked, every thread that read the pointer before it was cleared has pinned it.
  const std::lock_guard<std::mutex> lock(pinning());
}

Pinned<HybridBase> HybridData::peerOf(jobject self) {
  static const jfieldID field =
      findField(kHybridClassBase, "mHybridData", "Lcom/zentrel/jni/HybridData;");
  const LocalRef<jobject> hybridData(environment()->GetObjectField(self, field));
  if (!hybridData) {
    throwNewJavaException(kNullPointerException, "java.lang.NullPointerException");
  }
  const LocalRef<jobject> destructor = destructorOf(hybridData.get());
  Pinned<HybridBase> peer = destructor ? pin(destructor.get()) : nullptr;
  if (!peer) {
    throwNewJavaException(kNullPointerException, "the native peer has been released");
  }
  return peer;
}

void HybridData::registerNatives() {
  jni::registerNatives(kDestructor,
                       {{"deleteNative", "(J)V", reinterpret_cast<void*>(&deleteNative)}});
}

}  // namespace zentrel::jni
