# In place of vcpkg's own: for the oldest Android that the library supports, and static.
set(VCPKG_TARGET_ARCHITECTURE arm)
set(VCPKG_CRT_LINKAGE static)
set(VCPKG_LIBRARY_LINKAGE static)
set(VCPKG_CMAKE_SYSTEM_NAME Android)
set(VCPKG_CMAKE_SYSTEM_VERSION 21)
set(VCPKG_MAKE_BUILD_TRIPLET --host=armv7a-linux-androideabi)
set(VCPKG_CMAKE_CONFIGURE_OPTIONS -DANDROID_ABI=armeabi-v7a
  -DBOOST_FILESYSTEM_DISABLE_STATX=ON -DBOOST_FILESYSTEM_DISABLE_GETRANDOM=ON)
