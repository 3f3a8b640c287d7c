#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "jni/mergedLibraries.h"

namespace {

using zentrel::vistabase::ardelivery::loadResult;
using zentrel::vistabase::ardelivery::MergedLibrary;

jint load(JNIEnv*, jclass) {
  return 0;
}

[[gnu::section("pre_merge_jni_libraries"), gnu::used, gnu::retain]] const MergedLibrary rows[] = {
    {"jni_lib_merge-stub", nullptr}, {"lib-one.so", &load}, {"libtwo.so", &load}};

/// As much of a virtual machine as JNI_OnLoad sees.
struct FakeVm {
  static inline jint getEnvResult, registerResult;
  static inline bool hasClass;
  static inline std::vector<std::string> registered;

  JNINativeInterface_ envTable = {};
  JNIEnv env{&envTable};
  JNIInvokeInterface_ vmTable = {};
  JavaVM vm{&vmTable};

  FakeVm() {
    getEnvResult = JNI_OK;
    registerResult = JNI_OK;
    hasClass = true;
    registered.clear();
    static JNIEnv* current;
    current = &env;
    vmTable.GetEnv = [](JavaVM*, void** result, jint version) {
      EXPECT_EQ(JNI_VERSION_1_2, version);
      *result = current;
      return getEnvResult;
    };
    envTable.FindClass = [](JNIEnv*, const char* name) {
      EXPECT_STREQ("com/zentrel/nexboot/MergedSoMapping$Invoke_JNI_OnLoad", name);
      return hasClass ? reinterpret_cast<jclass>(current) : nullptr;
    };
    envTable.RegisterNatives = [](JNIEnv*, jclass, const JNINativeMethod* methods, jint count) {
      for (jint i = 0; i < count; ++i) {
        registered.push_back(std::string(methods[i].name) + methods[i].signature);
        EXPECT_EQ(reinterpret_cast<void*>(&load), methods[i].fnPtr);
      }
      return registerResult;
    };
  }
};

TEST(JniOnLoad, registersEachMergedLibraryButThePlaceholder) {
  FakeVm fake;
  EXPECT_EQ(JNI_VERSION_1_6, JNI_OnLoad(&fake.vm, nullptr));
  EXPECT_EQ((std::vector<std::string>{"lib_one_so()I", "libtwo_so()I"}), FakeVm::registered);
  FakeVm::registerResult = -3;
  EXPECT_EQ(-1, JNI_OnLoad(&fake.vm, nullptr));
  FakeVm::hasClass = false;
  EXPECT_EQ(-1, JNI_OnLoad(&fake.vm, nullptr));
  FakeVm::getEnvResult = JNI_EVERSION;
  EXPECT_EQ(-1, JNI_OnLoad(&fake.vm, nullptr));
  EXPECT_EQ(4u, FakeVm::registered.size()) << "nothing after the two loads that came so far";
}

TEST(JniOnLoad, namesAndResultsAreMapped) {
  const std::unique_ptr<char, decltype(&std::free)> name(
      zentrel::vistabase::ardelivery::toJniName("lib_A9-z.\xFF\xC3so"), &std::free);
  EXPECT_STREQ("lib_A9_z___so", name.get());
  for (const jint version : {0x10002, 0x10004, 0x10006}) {
    EXPECT_EQ(0, loadResult(version));
  }
  for (const jint version : {0x10003, 0x10005, 0x10001, 0x10008, 0, -1}) {
    EXPECT_EQ(-1, loadResult(version));
  }
}

}  // namespace
