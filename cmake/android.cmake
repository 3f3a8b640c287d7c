# The toolchain of the android-* presets: the NDK's own, with Boost from vcpkg, for ANDROID_ABI.

set(ANDROID_PLATFORM android-21)
set(ANDROID_STL c++_static)

set(VCPKG_CHAINLOAD_TOOLCHAIN_FILE $ENV{ANDROID_NDK_ROOT}/build/cmake/android.toolchain.cmake)
set(VCPKG_OVERLAY_TRIPLETS ${CMAKE_CURRENT_LIST_DIR}/triplets)
if(ANDROID_ABI STREQUAL "arm64-v8a")
  set(VCPKG_TARGET_TRIPLET arm64-android)
elseif(ANDROID_ABI STREQUAL "armeabi-v7a")
  set(VCPKG_TARGET_TRIPLET arm-neon-android)
elseif(ANDROID_ABI STREQUAL "x86_64")
  set(VCPKG_TARGET_TRIPLET x64-android)
endif()
set(ENV{ANDROID_NDK_HOME} $ENV{ANDROID_NDK_ROOT})  # where vcpkg looks for the NDK

include($ENV{VCPKG_ROOT}/scripts/buildsystems/vcpkg.cmake)
