#!/usr/bin/env bash
# tests/inspect.sh MODELCACHE_INSPECT FIXTURE MANUAL: what the tool says of roots in every state, what
# it exits with, and that it changes nothing unless it is told to. FIXTURE makes the stores.
set -u
inspect=$1 fixture=$2 manual=$3 completion=$(dirname "$0")/../tools/inspect/modelcache-inspect.bash
completion=$(realpath "$completion")
failures=0 unfinished=1
nl=$'\n'
folder=$(mktemp -d)
trap 'rm -rf "$folder"; exit $((failures + unfinished))' EXIT
cd "$folder"
export NO_COLOR=1 LC_ALL=C.UTF-8

fail() { echo "FAILED: $*" >&2; failures=$((failures + 1)); }

# expect STATUS PATTERN ARGUMENT...: the exit status, the pattern in the output, and roots that are
# as they were.
expect() {
  local status=$1 pattern=$2 before output actual
  shift 2
  before=$(find . -printf '%P %y %m %s %T@\n' | sort)
  output=$("$inspect" "$@" 2>&1) && actual=0 || actual=$?
  [[ $actual == "$status" ]] || fail "$* exits with $actual, not $status: $output"
  [[ $output =~ $pattern ]] || fail "$* does not say '$pattern': $output"
  [[ $(find . -printf '%P %y %m %s %T@\n' | sort) == "$before" ]] || fail "$* changed something"
}

# A root with an entry in each state: 'old' and 'new' are in order.
mkdir -p all/root/extra
printf 12345 >all/root/old; printf 1234567 >all/root/new; printf 123 >all/root/stray
printf xy >all/root/extra/new; printf half >all/root/.part-new; ln all/root/old all/root/.link
echo '{"versions":[{"version":3,"models":[{"type":"seg_init_net.pb","cacheKey":"old"},
  {"type":"seg_predict_net.pb","cacheKey":"new"}]},{"version":4,
  "models":[{"type":"face_tracker_model.bin","cacheKey":"gone"},
  {"type":"pdm_multires.bin","cacheKey":"new"}]}]}' >all/root/versioned_index
cat >all/root/metadata.json <<<'{"entries":[{"key":"new","size":7,"lastAccess":1700000001000},
  {"key":"old","size":5,"lastAccess":1700000000000},{"key":"gone","size":9,"lastAccess":1},
  {"key":"versioned_index","size":1,"lastAccess":1700000002000}]}'

expect 0 'new +7 B  2023-11-14 22:13Z  shared' all/root
expect 0 "gone +9 B  [^$nl]*only recorded.*stray +3 B  never +only on disk.*link.*other.*part-new +4 B" all/root
expect 0 "Total $(find all/root ! -type d -printf '%s\n' | paste -sd+ | bc) B, of which 16 B" all/root
# 'stray' was never used, then 'old' is the oldest.
expect 0 'old [^!]*evicted 2.*stray [^!]*evicted 1.*budget of 9 B: 7 B over' --budget 9 all/root
expect 0 'Version 3, 12 B, SEGMENTATION complete.*new  7 B.*_model.bin  gone  missing' all/root
expect 1 'version 4 of FACE_TRACKING is not complete: no file for face_detector' --check all/root
expect 1 'part-new was begun and not ended.*overwrite each other' --check all/root
expect 0 'nothing done' --recover all/root
order() { "$inspect" --json --sort "$1" all/root | jq -r '[.entries[].name] | join(" ")'; }
[[ $(order name) == 'gone new old stray versioned_index' ]] || fail "by name: $(order name)"
[[ $(order size) == 'gone new old stray versioned_index' ]] || fail "by size: $(order size)"
[[ $(order age) == 'stray gone old new versioned_index' ]] || fail "by age: $(order age)"

# Roots in order, and in disorder of one kind each.
mkdir -p all/{fine/extra,unparsable,misshapen,blind,odd/metadata.json,huge} empty foreign
printf 1 >all/fine/a; printf 1 >foreign/a; printf 1 >all/blind/a; printf 1 >all/odd/extra
echo '{"entries":[{"key":"a","size":1,"lastAccess":0}]}' | tee all/{fine,blind}/metadata.json >/dev/null
printf '{"entries":[\n{"key":"a","size":1,"last' >all/unparsable/metadata.json
echo '{"entries":[{"key":"a","size":1,"lastAccess":0},{"key":"b"}]}' >all/misshapen/metadata.json
echo '{"entries":[{"key":"a","size":-9223372036854775808,"lastAccess":9223372036854775807}]}' \
  >all/huge/metadata.json
touch all/huge/a
echo '{"versions":[{"version":1}]}' >all/blind/versioned_index
perl -MSocket -e 'socket(S, AF_UNIX, SOCK_STREAM, 0); bind(S, sockaddr_un("all/odd/socket"))'
expect 0 'No findings' --check empty
expect 0 'No findings' --check all/fine
expect 1 'exceeds the budget by 1 bytes' --check --budget 0 all/fine
expect 1 'parse error: incomplete JSON at byte 38' --check all/unparsable
expect 1 "metadata.json is damaged: entries\\[1\\]: missing member .size.$nl.*--recover" --check all/misshapen
expect 1 'versioned_index is damaged: versions\[0\].models: type error: expected array, found null' --check all/blind
expect 1 'metadata.json cannot be read.*socket cannot be measured: every operation of the cache fails.*extra is no folder' --check all/odd
expect 1 '-8.0 EiB count for the budget of 0 B: 8.0 EiB left' --check --budget 0 all/huge

# Stores: in order, and at work; what one that is at work has begun is no finding, and it keeps its root.
"$fixture" all/store 5:aaaa,bbbb 6:aaaa,cc 7:ddd,cc
bbbb=$(printf bbbb | sha256sum | cut -c-64)-seg_predict_net.pb
ddd=$(printf ddd | sha256sum | cut -c-64)-seg_init_net.pb
expect 0 'of SEGMENTATION.*shared.*13 B count for the budget of 14 B.*delete 1 files, version 5.*Version 7, active, 5 B' --budget 14 --begin 3 all/store
expect 0 "$bbbb +4 B[^$nl]*evicted 1" --budget 12 --check all/store
expect 1 'an update would fail: no room for 10 more bytes' --budget 12 --begin 10 --check all/store
expect 0 '4 files verified.*No findings' --verify all/store
expect 0 'Holds files.*No findings' --check all/store.files
expect 0 'a.* evicted 1.*delete 1 files' --budget 4 all/store.files
for order in '--trim-except 6 7 4' '--activate 4' '--export 4 out'; do
  expect 2 'no complete version 4' all/store $order
done
expect 2 'lies in the cache' --export 7 all/store/out all/store
expect 2 'empty exists' --export 7 empty all/store
expect 2 'do not go together' --activate 5 --json all/store
expect 2 'does not tell of which capability' --activate 3 all/root
expect 2 'more than one ROOT' --activate 5 all/store all/store
coproc "$fixture" all/store hold
held=$COPROC_PID; read -r -u "${COPROC[0]}"; rm all/store/.store
expect 0 "open in the process $held .*running.*No findings" --check all/store
for order in --recover '--trim-except 7' '--activate 5'; do
  expect 2 "has a store in the process $held " all/store $order
done
kill -9 $held; wait $held 2>/dev/null
expect 1 'part-[^ ]* was begun and not ended' --check all/store

# What changes a store, and what it makes.
"$inspect" --activate 5 all/store | grep -q 'versions 5 (active) 6 7' || fail "--activate"
"$inspect" --trim-except 6 all/store | grep -q 'versions 5 (active) 6$' || fail "--trim-except"
! ls -A all/store | grep -E "part|$ddd" || fail "--trim-except leaves files"
"$inspect" --export 5 out all/store >/dev/null
[[ $(head out/*) == $'==> out/seg_init_net.pb <==\naaaa\n==> out/seg_predict_net.pb <==\nbbbb' ]] ||
  fail "--export: $(head out/*)"

# Stores that are damaged, killed in between, or another release's.
printf bbbc >"all/store/$bbbb"
expect 0 'No findings' --check all/store
expect 1 "! $bbbb is seg_predict_net.pb of version 5 .active.: differs" --verify all/store
expect 2 "$bbbb is damaged" --export 5 out2 all/store
printf x >"all/store/$bbbb"; rm all/store/.store
expect 1 'has 1 bytes instead of 4' --verify all/store
expect 1 'open would write .store.*would report: dropped version 5' --check all/store
echo >all/store/.versions
expect 1 "of SEGMENTATION.*Version 6, active.*report: .versions is damaged.*report: recovered the versions" --check all/store
expect 2 'does not tell of which capability' --activate 6 all/store
rm all/store/versioned_index
expect 1 'neither the store.s marker' --check all/store
for own in .store .versions; do
  mkdir newer; printf '{"entries":[' >newer/metadata.json
  perl -MCompress::Zlib -e '$_ = "{\"format\":2"; printf("%s,\"crc32\":%u}", $_, crc32($_))' >newer/$own
  for order in --check --recover '--activate 1' '--export 1 out2'; do
    expect 2 'written by a newer release, in format 2' newer $order
  done
  rm -r newer
done

# Names that would steer a terminal, and what they are as JSON.
mkdir hostile
names=($'\e[31m' $'\xE9' $'\xE0\x80\x80' $'\xF4\xBF\xBF\xBF' $'\xED\xA0\x80' $'\u202Egnp' $'\xC2\x9B' $'\uFEFFa' $'\u200Bb'
  "$(printf '漢%.0s' {1..70})" a$'\n'b "$(printf 'long-%.0s' {1..40})")
for name in "${names[@]}"; do touch "hostile/$name"; done
printf '{"entries":[{"key":"\e[31m\x80"' >hostile/metadata.json
"$fixture" stored 7:ddd,cc
for columns in 60 120; do
  for root in hostile all/root all/odd all/huge stored; do
    output=$(script -qec "stty cols $columns; '$inspect' --budget 3 $root" /dev/null | tr -d '\r')
    (($(wc -L <<<"$output") <= columns)) || fail "$root is wider than $columns columns: $output"
    [[ $output =~ NAME.*Total.*Findings && ! $output =~ [$'\e\x9b\u202e\ufeff\u200b'] ]] || fail "$root: $output"
    iconv -f UTF-8 -t UTF-16 <<<"$output" >/dev/null || fail "$root is no UTF-8"
  done
done
for name in "${names[@]}"; do
  "$inspect" --json hostile | jq -e --arg hex "$(printf %s "$name" | od -An -v -tx1 | tr -d ' \n')" \
    --arg name "$name" '.entries[] | select(.nameHex == $hex or (.nameHex == null and .name == $name))' \
    >/dev/null || fail "no $(printf %q "$name") in JSON"
done
script -qec "stty cols 60; '$inspect' stored" /dev/null | grep -q "^${ddd::8}[^ ]*…-seg_init_net.pb" ||
  fail "no type at 60 columns"
expect 2 'hostile/.x1b' $'hostile/\e'

# Several roots, and what cannot be inspected.
[[ $("$inspect" --json all fine missing 2>&1 | jq -rs 'map(.error // .root) | length') == 11 ]] ||
  fail "$("$inspect" --json all fine missing 2>&1)"
expect 2 'all/blind.*all/fine.*all/unparsable.*there is no folder .missing' --check all missing
for root in missing all/fine/a foreign ''; do
  expect 2 "^modelcache-inspect: [^$nl]+$" --check "$root"
  expect 2 '^\{"format":1,"root":.*"error":' --json "$root"
done
expect 0 'a +1 B' --force foreign
expect 2 'not in range' --budget -5 all/fine

damaged=$(<all/unparsable/metadata.json)
"$inspect" --recover all/unparsable >/dev/null || fail "--recover exits with $?"
[[ $(ls -A all/unparsable) == .metadata.json.damaged ]] || fail "--recover leaves $(ls -A all/unparsable)"
[[ $(<all/unparsable/.metadata.json.damaged) == "$damaged" ]] || fail "--recover loses the old text"

# The manual and the completion know every option.
PATH=$(dirname "$inspect"):$PATH
. "$completion"
COMP_WORDS=(modelcache-inspect --) COMP_CWORD=1
_modelcache_inspect
[[ ${COMPREPLY[*]} == $(grep -o '^  [^A-Z ]*--[a-z-]*' <("$inspect" --help) | grep -o -- '--.*' | xargs) ]] ||
  fail "completion: ${COMPREPLY[*]}"
for option in "${COMPREPLY[@]}"; do
  grep -qF -- "${option//-/\\-}" "$manual" || fail "no $option in the manual"
done
unfinished=0
