#!/usr/bin/env bash
# tests/inspect.sh MODELCACHE_INSPECT FOLDER: what the tool says of roots in every state, what it
# exits with, and that it changes nothing. FOLDER has its manual and its completion.
set -u
inspect=$1 manual=$2/modelcache-inspect.1 completion=$2/modelcache-inspect.bash
failures=0
nl=$'\n'
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
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

expect 0 'new +7 B  2023-11-14 22:13Z +[0-9]+ d  shared' all/root
expect 0 "gone +9 B  [^$nl]*only recorded.*stray +3 B  never +only on disk.*link.*other.*part-new +4 B" all/root
expect 0 "Total $(find all/root ! -type d -print0 | du --files0-from=- -bc | tail -1 | cut -f1) B in 7 files" all/root
expect 0 'unfinished +4 B +1 file[^s].*The cache counts 16 B' all/root
# 'stray' was never used, then 'old' is the oldest.
expect 0 'old [^!]*evicted 2.*stray [^!]*evicted 1.*budget of 9 B: 7 B over' --budget 9 all/root
expect 0 'Version 3, 12 B, segmentation complete.*new  7 B.*_model.bin  gone  missing' all/root
expect 1 'version 4 of face tracking is not complete: no file for face_detector' --check all/root
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
expect 1 'parse error: incomplete JSON at byte 38, after .*"last' --check all/unparsable
expect 1 "metadata.json is damaged: entries\\[1\\]: missing member .size.$nl.*--recover" --check all/misshapen
expect 1 'versioned_index is damaged: versions\[0\].models: type error: expected array, found null' --check all/blind
expect 1 'metadata.json is no file.*socket cannot be measured: every operation of the cache fails.*extra is no folder' --check all/odd
expect 1 '-8.0 EiB of a budget of 0 B: 8.0 EiB left' --check --budget 0 all/huge

# A store, of which a bit is flipped, then a file and a copy of its table are lost.
mkdir -p all/store/extra
sum=$(printf model | sha256sum | cut -c-64)
table="sequence 1${nl}later kind${nl}version 7${nl}active 7$nl"
for type in seg_init_net.pb seg_predict_net.pb; do
  printf model >"all/store/$type"
  table+="file $type 5 $sum $type$nl"
done
check=$(printf %s "$table" | gzip | tail -c8 | od -An -tx4 -N4 | sed 's/^ 0*//')
printf '%scheck %s\n' "$table" "$check" | tee all/store/.versions >all/store/extra/.versions
jq -Rsc '{versions: [{version: 7, models: [split("\n")[] | select(startswith("file ")) | split(" ") |
  {type: .[1], cacheKey: .[4]}]}]}' all/store/.versions >all/store/versioned_index
expect 0 'Version 7, active, 10 B, segmentation complete.*2 files verified.*No findings' --verify --check all/store
printf modem >all/store/seg_init_net.pb
expect 0 'No findings' --check all/store
expect 1 'init_net.pb differs from its recorded digest' --verify --check all/store
rm all/store/{versioned_index,seg_init_net.pb,extra/.versions}
expect 1 'version 7 is not in versioned_index.*no file for seg_init_net.pb' --check all/store
expect 1 'extra/.versions is missing' --check all/store
echo >>all/store/.versions
expect 1 '.versions is damaged: the checksum is wrong' --check all/store

# Names that would steer a terminal, and what they are as JSON.
mkdir hostile
names=($'\e[31m' $'\xE9' $'\xE0\x80\x80' $'\xF4\xBF\xBF\xBF' $'\xED\xA0\x80' $'\u202Egnp' $'\xC2\x9B'
  "$(printf '漢%.0s' {1..70})" a$'\n'b "$(printf 'long-%.0s' {1..40})")
for name in "${names[@]}"; do touch "hostile/$name"; done
printf '{"entries":[{"key":"\e[31m\x80"' >hostile/metadata.json
for columns in 60 120; do
  for root in hostile all/root all/odd all/huge; do
    output=$(script -qec "stty cols $columns; '$inspect' --budget 3 $root" /dev/null | tr -d '\r')
    (($(wc -L <<<"$output") <= columns)) || fail "$root is wider than $columns columns: $output"
    [[ $output =~ NAME.*Total.*Findings && ! $output =~ [$'\e\x9b\u202e'] ]] || fail "$root: $output"
    iconv -f UTF-8 -t UTF-16 <<<"$output" >/dev/null || fail "$root is no UTF-8"
  done
done
for name in "${names[@]}"; do
  "$inspect" --json hostile | jq -e --arg hex "$(printf %s "$name" | od -An -v -tx1 | tr -d ' \n')" \
    --arg name "$name" '.entries[] | select(.nameHex == $hex or (.nameHex == null and .name == $name))' \
    >/dev/null || fail "no $(printf %q "$name") in JSON"
done
expect 2 'hostile/.x1b' $'hostile/\e'

# Several roots, and what cannot be inspected.
[[ $("$inspect" --json all fine missing 2>&1 | jq -rs 'map(.error // .root) | length') == 10 ]] ||
  fail "$("$inspect" --json all fine missing 2>&1)"
expect 2 'all/blind.*all/fine.*all/unparsable.*there is no folder .missing' --check all missing
for root in missing all/fine/a foreign ''; do
  expect 2 "^modelcache-inspect: [^$nl]+$" --check "$root"
  expect 2 '^\{"root":.*"error":' --json "$root"
done
expect 0 'a +1 B' --force foreign
expect 2 'not in range' --budget -5 all/fine

damaged=$(<all/unparsable/metadata.json)
"$inspect" --recover all/unparsable >/dev/null || fail "--recover exits with $?"
[[ $(ls -A all/unparsable) == .metadata.json.damaged ]] || fail "--recover leaves $(ls -A all/unparsable)"
[[ $(<all/unparsable/.metadata.json.damaged) == "$damaged" ]] || fail "--recover loses the old text"

# The manual and the completion know every option.
. "$completion"
COMP_WORDS=(modelcache-inspect --) COMP_CWORD=1
_modelcache_inspect
[[ ${COMPREPLY[*]} == $(grep -o '^  [^A-Z ]*--[a-z]*' <("$inspect" --help) | grep -o -- '--.*' | xargs) ]] ||
  fail "completion: ${COMPREPLY[*]}"
for option in "${COMPREPLY[@]}"; do
  grep -qF -- "${option//-/\\-}" "$manual" || fail "no $option in the manual"
done
((failures == 0))
