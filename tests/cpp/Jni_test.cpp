#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <map>
#include <set>
#include <thread>
#include <vector>

#include "jni/ModelCacheHybrid.h"
#include "jni/mergedLibraries.h"
#include "platform/softerror/softerror.h"
#include "platform/zentreljni/HybridData.h"
#include "platform/zentreljni/Lookup.h"
#include "platform/zentreljni/ManagedData.h"

extern "C" jint JNI_OnLoad(JavaVM* vm, void* reserved);

namespace zentrel::vistabase::ardelivery {
namespace {

/// The parts of a virtual machine that the library needs to load, fail and own peers. References
/// are numbers; all objects are one.
struct FakeVm {
  static inline FakeVm* current;
  std::map<std::string, std::vector<JNINativeMethod>> registered;  // By class and method.
  std::vector<std::string> found;
  std::string missingClass;
  jint getEnvResult = JNI_OK, registerResult = JNI_OK;
  jlong field = 0;
  std::function<void()> whileReading = [] {};  // The field.
  int pending = 0, localRefs = 0, pinnedArrays = 0;
  jbyte bytes[3] = {1, -2, 3};

  // Their types have other names on Android.
  std::decay_t<decltype(*JNIEnv::functions)> functions = {};
  JNIEnv env{&functions};
  std::decay_t<decltype(*JavaVM::functions)> vmFunctions = {};
  JavaVM vm{&vmFunctions};
  jni::JniEnvCacher cacher{&env};

  template <class T = jobject>
  static T newLocal() {
    return reinterpret_cast<T>(static_cast<std::intptr_t>(++current->localRefs));
  }

  FakeVm() {
    current = this;
    vmFunctions.GetEnv = [](JavaVM*, void** result, jint) {
      *result = &current->env;
      return current->getEnvResult;
    };
    functions.GetJavaVM = [](JNIEnv*, JavaVM** result) { return *result = &current->vm, JNI_OK; };
    functions.FindClass = [](JNIEnv*, const char* name) {
      current->found.push_back(name);
      current->pending = name == current->missingClass ? 1 : current->pending;
      return name == current->missingClass ? nullptr : newLocal<jclass>();
    };
    functions.RegisterNatives = [](JNIEnv*, jclass, const JNINativeMethod* methods, jint count) {
      for (jint i = 0; i < count; ++i) {
        current->registered[current->found.back() + "." + methods[i].name].push_back(methods[i]);
      }
      return current->registerResult;
    };
    functions.GetMethodID = [](JNIEnv*, jclass, auto...) { return jmethodID(); };
    functions.GetFieldID = [](JNIEnv*, jclass, auto...) { return jfieldID(); };
    functions.NewGlobalRef = [](JNIEnv*, jobject object) { return object; };
    functions.NewObjectV = [](JNIEnv*, jclass, jmethodID, va_list) { return newLocal(); };
    functions.NewString = [](JNIEnv*, const jchar*, jsize) { return newLocal<jstring>(); };
    functions.GetObjectField = [](JNIEnv*, jobject, jfieldID) { return newLocal(); };
    functions.GetLongField = [](JNIEnv*, jobject, jfieldID) {
      return current->whileReading(), current->field;
    };
    functions.SetLongField = [](JNIEnv*, jobject, jfieldID, jlong to) { current->field = to; };
    functions.DeleteLocalRef = [](JNIEnv*, jobject) { --current->localRefs; };
    functions.ExceptionCheck = [](JNIEnv*) { return jboolean(current->pending != 0); };
    functions.ExceptionClear = [](JNIEnv*) { current->pending = 0; };
    functions.Throw = [](JNIEnv*, jthrowable) { return current->pending++, JNI_OK; };
    functions.GetArrayLength = [](JNIEnv*, jarray) { return 3; };
    functions.GetByteArrayElements = [](JNIEnv*, jbyteArray, jboolean*) {
      return ++current->pinnedArrays, current->bytes;
    };
    functions.ReleaseByteArrayElements = [](JNIEnv*, jbyteArray, jbyte*, jint mode) {
      current->pinnedArrays -= mode == JNI_ABORT ? 1 : 0;
    };
  }
};

TEST(Jni, registersTheNativesOfEachMergedLibraryOnce) {
  FakeVm fake;
  fake.missingClass = kStoreNativesClass;  // Stripped from the app.
  EXPECT_EQ(JNI_VERSION_1_6, JNI_OnLoad(&fake.vm, nullptr));
  const auto libraries = std::exchange(fake.registered, {});
  ASSERT_EQ(4u, libraries.size());
  for (const auto& [name, library] : libraries) {
    EXPECT_EQ(0u, name.find("com/zentrel/nexboot/MergedSoMapping$Invoke_JNI_OnLoad.lib"));
    EXPECT_STREQ("()I", library.at(0).signature);
    const auto load = reinterpret_cast<LoadFunction>(library[0].fnPtr);
    EXPECT_EQ(0, load(&fake.env, nullptr));
    EXPECT_EQ(0, load(&fake.env, nullptr));
  }
  EXPECT_EQ(7u, fake.found.size()) << "the mapping, five classes with natives, and the missing one";
  EXPECT_EQ(0, fake.pending);
  for (const auto& [name, native] : fake.registered) {
    EXPECT_EQ(1u, native.size()) << name;
  }
  softerror::setObserver({});
}

TEST(Jni, loadFailsWithoutRegistrationMappingClassOrEnvironment) {
  FakeVm fake;
  fake.registerResult = -3;
  EXPECT_EQ(JNI_ERR, JNI_OnLoad(&fake.vm, nullptr));
  fake.missingClass = "com/zentrel/nexboot/MergedSoMapping$Invoke_JNI_OnLoad";
  EXPECT_EQ(JNI_ERR, JNI_OnLoad(&fake.vm, nullptr));
  fake.getEnvResult = JNI_EVERSION;
  EXPECT_EQ(JNI_ERR, JNI_OnLoad(&fake.vm, nullptr));
  EXPECT_EQ(2u, fake.found.size());
}

TEST(Jni, mapsNamesAndResults) {
  const std::unique_ptr<char, decltype(&std::free)> name(toJniName("lib_A9-z.\xFF\xC3so"),
                                                         &std::free);
  EXPECT_STREQ("lib_A9_z___so", name.get());
  const std::set<jint> known = {0x10002, 0x10004, 0x10006};
  for (const jint version :
       {-1, 0, 0x10001, 0x10002, 0x10003, 0x10004, 0x10005, 0x10006, 0x10008}) {
    EXPECT_EQ(known.count(version) != 0 ? 0 : -1, loadResult(version));
  }
}

TEST(Jni, keepsAPendingManagedException) {
  constexpr ErrorTexts texts{"text: ", "unknown"};
  FakeVm fake;
  fake.missingClass = "a/Missing";
  EXPECT_THROW(raiseDescribed(texts, [] { jni::findClassStatic("a/Missing"); }),
               jni::PendingJavaException);
  EXPECT_EQ(1u, fake.found.size()) << "nothing is called once an exception is pending";
  for (int i = 0; i < 2; ++i) {
    fake.pending = 0;
    EXPECT_THROW(raiseDescribed(texts, [] { throw 1; }), jni::PendingJavaException);
    EXPECT_EQ(1, fake.pending);
  }
  EXPECT_EQ(2u, fake.found.size()) << "exception classes are cached";
  EXPECT_EQ(0, fake.localRefs);
}

TEST(Jni, releasesTheElementsOfByteArrays) {
  const FakeVm fake;
  EXPECT_EQ((std::vector<std::uint8_t>{1, 254, 3}), jni::JByteArray::toVector(nullptr));
  EXPECT_EQ(0, fake.pinnedArrays);
}

TEST(Jni, deletesAPeerOnceNoCallUsesIt) {
  struct Peer : jni::HybridBase {
    explicit Peer(std::atomic<bool>& isAlive) : alive(isAlive) { alive = true; }
    ~Peer() override { alive = false; }
    std::atomic<bool>& alive;
  };
  std::atomic<bool> alive = false;
  FakeVm fake;
  jni::HybridData::registerNatives();
  const auto deleteNative = reinterpret_cast<void (*)(JNIEnv*, jclass, jlong)>(
      fake.registered["com/zentrel/jni/HybridData$Destructor.deleteNative"].at(0).fnPtr);
  jni::HybridData::own(std::make_unique<Peer>(alive));
  deleteNative(&fake.env, nullptr, fake.field);
  EXPECT_FALSE(alive);

  jni::HybridData::own(std::make_unique<Peer>(alive));
  std::thread other;
  fake.whileReading = [&] {
    other = std::thread([&] { deleteNative(&fake.env, nullptr, fake.field); });
    for (int i = 0; i < 10'000 && alive; ++i) {
      std::this_thread::yield();
    }
    EXPECT_TRUE(alive) << "deleted between being found and being pinned";
  };
  auto pinned = jni::peerOf<Peer>(nullptr);
  other.join();
  EXPECT_TRUE(alive) << "deleted during a call";
  pinned.reset();
  EXPECT_FALSE(alive);
  EXPECT_EQ(0, fake.localRefs);
}

}  // namespace
}  // namespace zentrel::vistabase::ardelivery
