#!/usr/bin/env bash
# The library exports its entry points and its table, and nothing else.
expected='JNI_OnLoad
JNI_OnLoad_Weak
__start_pre_merge_jni_libraries
__stop_pre_merge_jni_libraries'
diff <(echo "$expected") <(nm --dynamic --defined-only --extern-only --format=just-symbols "$1" | LC_ALL=C sort)
