#include "platform/zentreljni/HybridData.h"

#include <cstdint>

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

HybridBase& getNativePointer(jobject destructor) {
  HybridBase* const peer = destructor == nullptr
                               ? nullptr
                               : toPeer(environment()->GetLongField(destructor, pointerField()));
  if (peer == nullptr) {
    throwNewJavaException(kNullPointerException, "the native peer has been released");
  }
  return *peer;
}

void JNICALL deleteNative(JNIEnv* env, jclass, jlong pointer) noexcept {
  const JniEnvCacher cacher(env);
  delete toPeer(pointer);
}

}  // namespace

LocalRef<jobject> HybridData::own(std::unique_ptr<HybridBase> peer) {
  LocalRef<jobject> hybridData = create();
  const LocalRef<jobject> destructor = destructorOf(hybridData.get());
  setNativePointer(destructor.get(), std::move(peer));
  return hybridData;
}

HybridBase& HybridData::peerOf(jobject self) {
  static const jfieldID field =
      findField(kHybridClassBase, "mHybridData", "Lcom/zentrel/jni/HybridData;");
  const LocalRef<jobject> hybridData(environment()->GetObjectField(self, field));
  if (!hybridData) {
    throwNewJavaException(kNullPointerException, "java.lang.NullPointerException");
  }
  return getNativePointer(destructorOf(hybridData.get()).get());
}

void HybridData::registerNatives() {
  jni::registerNatives(kDestructor,
                       {{"deleteNative", "(J)V", reinterpret_cast<void*>(&deleteNative)}});
}

}  // namespace zentrel::jni
