#!/usr/bin/env bash
# tests/inspect.sh MODELCACHE_INSPECT: what the tool says of roots in every state, what it exits
# with, and that it changes nothing.
set -u
inspect=$1
failures=0
nl=$'\n'
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export TZ=UTC

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
mkdir -p root/extra
printf 12345 >root/old; printf 1234567 >root/new; printf 123 >root/stray; printf xy >root/extra/new
index='{"versions":[{"version":3,"models":[{"type":"seg_init_net.pb","cacheKey":"old"},
  {"type":"seg_predict_net.pb","cacheKey":"new"}]},
  {"version":4,"models":[{"type":"face_tracker_model.bin","cacheKey":"gone"}]}]}'
echo "$index" >root/versioned_index
cat >root/metadata.json <<<'{"entries":[{"key":"new","size":7,"lastAccess":1700000001000},
  {"key":"old","size":5,"lastAccess":1700000000000},{"key":"gone","size":9,"lastAccess":1},
  {"key":"versioned_index","size":1,"lastAccess":1700000002000}]}'

expect 0 'new +7 B  2023-11-14 22:13:21 +2 B  present' root
expect 0 'gone +9 B  [^ ]* [^ ]* +-  only recorded' root
expect 0 'stray +3 B  never +-  only on disk' root
expect 0 'Total 16 B' root
# 16 bytes: 'stray' was never used, then 'old' is the oldest.
expect 0 "1  stray .*2  old [^$nl]*$nl$nl"Version --budget 9 root
expect 0 'segmentation complete.*face_tracker_model.bin  gone  missing' root
expect 1 'version 4 of face tracking is not complete: no file for pdm_multires.bin' --check root
expect 0 '"totalSize":16,"budget":9,"evictedNext":\["stray","old"\]' --json --budget 9 root
expect 0 'nothing done' --recover root

# Roots in order, and in disorder of one kind each.
mkdir -p empty fine/extra unparsable misshapen blind foreign
printf 1 >fine/a; printf 1 >foreign/a; printf 1 >blind/a
echo '{"entries":[{"key":"a","size":1,"lastAccess":0}]}' | tee fine/metadata.json >blind/metadata.json
printf '{"entries":[\n{"key":"a","size":1,"last' >unparsable/metadata.json
echo '{"entries":[{"key":"a","size":1,"lastAccess":0},{"key":"b"}]}' >misshapen/metadata.json
echo '{"versions":[{"version":1}]}' >blind/versioned_index
expect 0 'No findings' --check empty
expect 0 'No findings' --check fine
expect 1 'exceeds the budget by 1 bytes' --check --budget 0 fine
expect 1 "line 2, column 26: [^$nl]*$nl    \\{[^$nl]*last$nl {29}\\^" --check unparsable
expect 1 "damaged: entries\\[1\\]: missing member .size.$nl" --check misshapen
expect 1 'versioned_index is damaged: versions\[0\]: missing member "models"' --check blind

# What cannot be inspected: one line, on standard error.
for root in missing fine/a foreign ''; do
  expect 2 "^modelcache-inspect: [^$nl]+$" --check "$root"
  [[ -z $("$inspect" "$root" 2>/dev/null) ]] || fail "'$root' writes to standard output"
done
expect 0 'a +1 B' --force foreign
expect 2 'not in range' --budget -5 fine

damaged=$(<unparsable/metadata.json)
echo earlier >unparsable/.metadata.json.damaged
"$inspect" --recover unparsable >/dev/null || fail "--recover exits with $?"
[[ $(ls -A unparsable) == .metadata.json.damaged ]] || fail "--recover leaves $(ls -A unparsable)"
[[ $(<unparsable/.metadata.json.damaged) == "$damaged" ]] || fail "--recover loses the old text"
((failures == 0))
