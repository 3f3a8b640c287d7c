# Sourced first by every script: changes to the root of the checkout, answers --help with the comment
# at the head of the script, and defines what the scripts share.
set -euo pipefail
unset CDPATH
script=$(realpath -- "$0")
called_from=$PWD
cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.."

fail() { echo "$0: $*" >&2; exit 1; }
# from_caller PATH: the absolute path of an argument, which is relative to the caller's directory.
from_caller() { (cd -- "$called_from" && realpath -m -- "$1"); }
usage() { sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$script"; }
misused() { usage >&2; exit 2; }
[[ ${1-} != --help ]] || { usage; exit; }
[[ $PWD != *[:\;\$\#\\\"[]* ]] ||
  fail "CMake and Java cannot handle a path with one of : ; \$ # \\ \" [ in it: $PWD"

# Temporary files of everything that runs from here are deleted when the script ends, however it ends.
# Files that are synced often are better kept in memory.
TMPDIR=$(mktemp -d -t modelcache.XXXXXX)
memory=$(mktemp -d -p /dev/shm modelcache.XXXXXX 2>/dev/null || mktemp -d)
export TMPDIR
trap 'rm -rf -- "$TMPDIR" "$memory"' EXIT

# The Debian packages that the scripts need, by purpose.
declare -A packages=(
  # Boost 1.81 and not the default 1.74: see CMakeLists.txt.
  [build]='cmake g++ libboost-filesystem1.81-dev libboost-json1.81-dev libjetbrains-annotations-java libssl-dev ninja-build openjdk-17-jdk-headless'
  [tools]='libcli11-dev'
  [tests]='jq libandroid-json-java libgmock-dev libgtest-dev junit5'
  [demo]='opencv-data'  # has real face-detection models, small enough to be in Debian
  [shrink]='proguard-cli'
  [android]='android-liblog-dev binutils clang-19 lld-19 llvm-19'  # the platform's log, built for the host
  [maven]='jq libmaven-dependency-plugin-java maven'
  [install]='clang libc++-14-dev libc++abi-14-dev pkg-config'
  [docs]='doxygen'
  [ci]='clang clang-format clang-tidy git lld'
  [bench]='binutils libbenchmark-dev strace valgrind'
  [fuzz]='clang libclang-rt-14-dev'
  [arm]='g++-aarch64-linux-gnu g++-arm-linux-gnueabihf googletest qemu-user-static'  # for the presets arm*
)

# need PURPOSE...: installs missing packages. If none is missing, needs neither root nor Debian.
need() {
  local purpose package missing=() release
  for purpose in "$@"; do
    for package in ${packages[$purpose]}; do
      # The status also tells removed packages from installed ones.
      [[ $(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null) == installed ]] ||
        missing+=("$package")
    done
  done
  ((${#missing[@]} > 0)) || return 0
  release=$( (. /etc/os-release && echo "${ID-} ${VERSION_ID-}") 2>/dev/null || true)
  [[ $release == "debian 12" ]] || fail "needs Debian 12, for the packages ${missing[*]}"
  [[ $(id -u) == 0 ]] || fail "needs to be run as root, to install the packages ${missing[*]}"
  echo "installing ${missing[*]}"
  exec {apt_lock}<scripts && flock "$apt_lock"
  local apt=(env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600)
  # A failed update is no reason to stop: lists may be there already, or a single mirror down.
  "${apt[@]}" update >"$TMPDIR/apt" 2>&1 || true
  "${apt[@]}" install --yes --no-install-recommends "${missing[@]}" >>"$TMPDIR/apt" 2>&1 ||
    fail "packages could not be installed, is there a network? $(grep -m1 '^E: ' "$TMPDIR/apt" || true)"
  exec {apt_lock}<&-
}

# quietly COMMAND...: shows what the command prints only when it fails.
quietly() { "$@" >"$TMPDIR/log" 2>&1 || { cat "$TMPDIR/log" >&2; return 1; }; }

# configured PRESET [OPTION...]: waits until no other script uses the preset's build folder, locks it
# until this script ends, and configures it, the first time without tests. A folder that cannot be
# configured again (because it was copied from elsewhere, say) is configured from scratch.
configured() {
  local folder=build
  [[ $1 == default ]] || folder=build-$1
  grep -q "\"name\": \"$1\"" CMakePresets.json || misused
  mkdir -p "$folder"
  exec {build_lock}<"$folder"
  flock --nonblock "$build_lock" ||
    { echo "$0: waiting for another script that uses $folder" >&2; flock "$build_lock"; }
  [[ -f $folder/CMakeCache.txt ]] && cmake --preset "$@" >/dev/null 2>&1 ||
    quietly cmake --fresh --preset "$1" -D MODELCACHE_TESTS=OFF "${@:2}"
}
