# Stands in for the NDK's own where there is none: clang, lld and libc++ for the ABI's machine, with the
# NDK's strictness, but over Debian's C library. No device can load what it builds.
set(ANDROID TRUE)
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ANDROID_ABI)
if(ANDROID_ABI STREQUAL "arm64-v8a")
  set(target aarch64-linux-gnu)
  set(machine arm64)
elseif(ANDROID_ABI STREQUAL "armeabi-v7a")
  set(target arm-linux-gnueabihf)
  set(machine armhf)
  set(options "-march=armv7-a -mfpu=neon -mthumb")
else()
  set(target x86_64-linux-gnu)
  set(machine amd64)
endif()

include(${CMAKE_CURRENT_LIST_DIR}/../../../fetch.cmake)
debian_packages(${machine}
  libc++-19-dev libc++abi-19-dev libunwind-19-dev android-liblog android-liblog-dev)
set(root ${DEBIAN_FOLDER}/${machine})

# Nothing of the host's, except for programs.
set(CMAKE_FIND_ROOT_PATH ${root})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_COMPILER_TARGET ${target})
set(MODELCACHE_WERROR ON)
find_program(JAVAC javac REQUIRED)
file(REAL_PATH ${JAVAC} jdk)
cmake_path(GET jdk PARENT_PATH jdk)
cmake_path(GET jdk PARENT_PATH jdk)
cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH ndk)
cmake_path(GET ndk PARENT_PATH ndk)
string(CONCAT CMAKE_CXX_FLAGS_INIT "${options} -g -DANDROID -fdata-sections -ffunction-sections "
  "-funwind-tables -fstack-protector-strong -no-canonical-prefixes -D_FORTIFY_SOURCE=2 -Wformat "
  "-Werror=format-security -Qunused-arguments -nostdinc++ -isystem ${ndk}/include "
  "-isystem ${root}/usr/include/android -isystem ${root}/usr/lib/llvm-19/include/c++/v1 "
  "-isystem ${jdk}/include -isystem ${jdk}/include/linux")
string(CONCAT linking "--ld-path=/usr/lib/llvm-19/bin/ld.lld -nostdlib++ -static-libgcc "
  "-Wl,--build-id=sha1 -Wl,--no-undefined-version -Wl,--fatal-warnings -Wl,--no-undefined "
  "-Wl,-z,max-page-size=16384 -Wl,--as-needed "
  "-L${root}/usr/lib/llvm-19/lib -L${root}/usr/lib/${target}/android")
set(CMAKE_SHARED_LINKER_FLAGS_INIT ${linking})
set(CMAKE_EXE_LINKER_FLAGS_INIT ${linking})

# The C++ runtime as in the NDK, without thread_local.
set(globals ${CMAKE_BINARY_DIR}/exceptionGlobals.o)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} --target=${target} -O2 -fPIC -c
  ${ndk}/exceptionGlobals.cpp -o ${globals} COMMAND_ERROR_IS_FATAL ANY)
set(CMAKE_CXX_STANDARD_LIBRARIES "${globals} -l:libc++.a -l:libc++abi.a -l:libunwind.a")
