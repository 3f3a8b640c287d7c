# Makes docs/performance.md out of the report.

def padded($width): . + (" " * ([$width - length, 0] | max) // "");
def table($head; $rows):
  ([$head] + $rows) as $all
  | ($head | keys | map(. as $i | $all | map(.[$i] | length) | max)) as $widths
  | def line: . as $cells | "| " + ($widths | to_entries | map(.value as $width
      | $cells[.key] | padded($width)) | join(" | ")) + " |";
    ($head | line), "|" + ($widths | map("-" * (. + 2)) | join("|")) + "|", ($rows[] | line);

def decimal($digits):
  (. * pow(10; $digits) | round | tostring) as $text
  | if $digits == 0 then $text
    else ("0" * ([$digits + 1 - ($text | length), 0] | max) // "") + $text
      | .[:-$digits] + "." + .[-$digits:] end;
def time:
  if . == null then "-"
  elif . < 1000 then (decimal(0) + " ns")
  elif . < 100000 then (. / 1000 | decimal(1)) + " µs"
  elif . < 1000000 then (. / 1000 | decimal(0)) + " µs"
  else (. / 1000000 | decimal(1)) + " ms" end;
def count: if . == null then "-" elif . < 1000 then tostring
  else (. / 1000 | floor | count) + "," + (. % 1000 + 1000 | tostring | .[1:]) end;
def figure($unit): if . == null then "not measured"
  elif $unit == "instructions" then count else decimal(2) end;

# In the order of the interface, which is the order of the instructions' measurement.
def order: ["insertAndLock", "commit", "commit with size", "commit, 1 eviction",
  "commit, 10 evictions", "unlock", "getCacheEntry", "getCacheEntryWithoutPromotion", "updateExtra",
  "getAllMetas", "memContains", "remove", "getSize", "clear", "flushExtra", "queryEntries",
  "four path getters"];

def operationTable($place):
  . as $report
  | table(["operation"] + ($report.entries | map(count + " entries"));
      order | map(. as $name | [$name] + ($report.entries | map(. as $entries
        | first(($report.operations[]
            | select(.name == $name and .place == $place and .entries == $entries)), {})
        | (.nanoseconds | time) + (if .ratio then " (" + (.ratio | decimal(2)) + " ×)" else "" end)
      ))));

def peerTable($place):
  . as $report
  | table(["", "entries", "file cache", "SQLite OFF", "SQLite NORMAL"];
      [.peer[] | select(.place == $place) | .nanoseconds as $times
       | [.name, (.entries | count), ($times["file cache"] | time)]
         + (["SQLite OFF", "SQLite NORMAL"] | map($times[.] | time))]);

# From which entry count the peer is faster, the cases of one answer together.
def peerVerdict:
  .peer as $rows
  | [$rows[] | {name, place}] | unique
  | [.[] as $case | ["SQLite OFF", "SQLite NORMAL"][] as $side
     | [$rows[] | select(.name == $case.name and .place == $case.place)] as $these
     | {case: "\($case.name) on \($case.place) (\($side | ltrimstr("SQLite ")))",
        slower: [$these[] | select(.nanoseconds[$side] >= .nanoseconds["file cache"]) | .entries],
        all: ($these | map(.entries))}]
  | length as $total
  | group_by(.slower)[]
  | (if length == $total then "in every case" else map(.case) | join(", ") end) as $cases
  | if .[0].slower == [] then
      "- SQLite is faster from \(.[0].all[0]) entries on, the fewest measured: \($cases)."
    elif .[0].slower == .[0].all then "- The file cache is faster throughout: \($cases)."
    else "- SQLite is faster except at \(.[0].slower | map(count) | join(", ")) entries: \($cases)." end;

"# Performance",
"",
"Written by `scripts/bench` out of what it measured; `scripts/bench --publish` renews it.",
"",
"Each operation of the file cache reads the metadata file, lists the root and often writes the",
"file: that is the contract, and it makes the disk the truth. What can be asked is how little the",
"library adds to those system calls. Its *floor* is a loop that makes the same calls on the same",
"files in the same order and does nothing else; the run checks with strace that the calls of each",
"operation and of its floor are the same, argument by argument, those of the allocator left out.",
"",
"All times are medians of repetitions that take turns in random order. **Nanoseconds to",
"milliseconds depend on the machine, and so do the peer's and the cold start's figures; ratios",
"depend on it a little; instructions, system calls and bytes do not,** only on compiler and",
"libraries. The build is a release with link-time optimisation, Boost linked dynamically.",
"",
"## Targets",
"",
table(["", "at most", "measured", "unit", ""];
  [.targets[] | [.what, (.limit | tostring), (.unit as $unit | .figure | figure($unit)), .unit,
    (if .reached == null then "" elif .reached then "reached" else "**missed**" end)]]),
"",
(if any(.targets[]; .reached == false) then
  "What stands in the way of those that are missed is shown by `callgrind_annotate` on",
  "`build/bench/callgrind.32`."
else "None of those measured is missed." end),
"",
"![Time of a look-up against the number of entries](performance.svg)",
"",
"## Operations in memory",
"",
"On tmpfs, where system calls cost least and the library shows most. In brackets, the ratio to",
"the floor.",
"",
operationTable("tmpfs"),
"",
"`commit` measures the file first; the other three are `commit(key, size)`. Ten entries cannot be",
"evicted out of six. `flushExtra` makes no system call. `queryEntries` looks up the four files of a",
"version, and each of the four path getters does so again.",
"",
"## Operations on disk",
"",
"Nothing is synced, so that this is the file system's own cost; it varies more between runs than",
"the library's share of it.",
"",
operationTable("disk"),
"",
"## Instructions and system calls",
"",
"Of one operation in memory, under callgrind and strace.",
"",
(.calls as $calls | .instructions as $instructions
 | table(["operation", "instructions, 6 entries", "32 entries", "system calls, 32 entries"];
     order[:-2] | map([., ($instructions[.]["6"] | count), ($instructions[.]["32"] | count),
       ($calls[.] // 0 | count)]))),
"",
"## An index in SQLite",
"",
"The same contract as its users would write it: files beside a table of keys, sizes and times,",
"indexed by age, in WAL mode, one transaction per operation. It trusts its table, where the file",
"cache looks for files that came or went. *Insert and commit* gets a file in and evicts one; for",
"the file cache these are `insertAndLock`, `getCacheEntry`, `commit` and `unlock`.",
"",
"In memory:",
"",
peerTable("tmpfs"),
"",
"On disk:",
"",
peerTable("disk"),
"",
peerVerdict,
"",
"What makes the difference is the contract: an update of SQLite's reads and writes a page or two,",
"one of the file cache's reads, checks against the directory and rewrites the whole metadata file,",
"once for each of the operations that *insert and commit* takes.",
"",
"## Cold start",
"",
"From the start of a process to its end, with the four face-tracking paths asked for in between, at",
"six entries in memory; and the same process without them.",
"",
table(["", "nothing", "four paths"];
  [["native process", (.coldStart.emptyProcess * 1000000 | time),
    (.coldStart.process * 1000000 | time)],
   ["Java virtual machine", (.coldStart.emptyMachine * 1000000 | time),
    (.coldStart.machine * 1000000 | time)]]),
"",
"## The border",
"",
"A look-up of an absent key by `getCacheEntryWithoutPromotion` takes \(.border.java | time) from Java and",
"\(.border.native | time) from native code in the same process: \(.border.beyond | time) for the call, its",
"string and the search for the native object.",
"",
"## Weight",
"",
"The stripped library has \(.weight.bytes | count) bytes and exports \(.weight.symbols) symbols. It loads in",
"\(.weight.loadMicroseconds * 1000 | time), with Boost. A native process that does nothing but link it peaks at",
"\(.weight.peakKiB.nothing | count) KiB; after look-ups at 6 entries at \(.weight.peakKiB["6"] | count) KiB, at 1,000 entries at",
"\(.weight.peakKiB["1000"] | count) KiB."
