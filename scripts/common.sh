# The Debian packages that the scripts need, by purpose, and how to build. Sourced.

# Boost 1.81 and not the default 1.74: see CMakeLists.txt.
build_packages=(
  cmake
  g++
  libboost-filesystem1.81-dev
  libboost-json1.81-dev
  ninja-build
  openjdk-17-jdk-headless
)
# For modelcache-inspect: its command line, and SHA-256.
tool_packages=(libcli11-dev libssl-dev)
# The tests' frameworks: the usual ones for C++ and for Java; what reads the inspector's JSON.
test_packages=(jq libgmock-dev libgtest-dev junit5)
# Real face-detection models, and small enough to be in Debian.
demo_packages=(opencv-data)
# Shrinks the demo as a release build of an app would be.
shrink_packages=(proguard-cli)
# Reads ELF files back; the platform log of Android, built for the host.
android_packages=(android-liblog-dev binutils clang lld)
# Other ways to use an installation: clang's C++ library, pkg-config.
install_packages=(clang libc++-14-dev libc++abi-14-dev pkg-config)
# Makes API pages out of the headers.
docs_packages=(doxygen)
# The other compiler and linker (Android's), the formatter and the linter.
ci_packages=(clang clang-format clang-tidy git lld)
# What the benchmarks measure with.
bench_packages=(binutils libbenchmark-dev valgrind)
# libFuzzer comes with clang's runtime.
fuzz_packages=(clang libclang-rt-14-dev)
# What the presets arm64 and armhf build and test with; their Boost comes as sources.
arm_packages=(g++-aarch64-linux-gnu g++-arm-linux-gnueabihf googletest qemu-user-static)

# quietly COMMAND...: shows what the command prints only when it fails.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 || status=$?
  ((status == 0)) || cat "$log" >&2
  rm -f "$log"
  return $status
}

# configured PRESET [TESTS [BENCHMARKS]]: configures the preset's build folder unless that has been
# done, with the tests and the benchmarks where that is ON. CMake itself notices later changes.
configured() {
  local folder=build cache
  [[ $1 == default ]] || folder=build-$1
  cache=$folder/CMakeCache.txt
  [[ -f $folder/build.ninja ]] && grep -q "^MODELCACHE_TESTS:BOOL=${2:-}" "$cache" &&
    grep -q "^MODELCACHE_BENCHMARKS:BOOL=${3:-}" "$cache" &&
    grep -qFx "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$cache" ||
    quietly cmake --fresh --preset "$1" -D MODELCACHE_TESTS="${2:-OFF}" \
      -D MODELCACHE_BENCHMARKS="${3:-OFF}"
}
