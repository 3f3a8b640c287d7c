#!/usr/bin/env bash
# needed-symbols.sh BUILD_FOLDER...: the names that our sources and Boost's have the platform's
# libraries define, in the libraries of the builds of .ci/check-android. The rest of what those leave
# undefined is the C++ runtime's, which the NDK makes for its oldest platform.
set -euo pipefail

undefined() { xargs llvm-nm-19 --undefined-only --format=just-symbols "$@" | sed 's/@.*//' | LC_ALL=C sort -u; }
for build; do
  comm -12 <(undefined --dynamic <<<"$build/libmodelcache.so") \
    <(find "$build"/{boost,src} -name '*.o' | undefined)
done |
  # What the platform has other names for than the C library of those builds.
  sed 's/^__errno_location$/__errno/; s/^__isoc99_sscanf$/sscanf/; s/^bcmp$/memcmp/' | LC_ALL=C sort -u
