# Makes the report out of what the programs of scripts/bench measured.

def lines($text): $text | split("\n") | map(select(. != ""));
def rounded($digits): if . == null then . else pow(10; $digits) as $unit | . * $unit | round / $unit end;
def ratio($value; $base): if $value and $base and $base > 0 then $value / $base else null end;
def below($what; $figure; $limit; $unit):
  {what: $what, limit: $limit, unit: $unit, figure: ($figure | rounded(2)),
   reached: (if $figure == null then null else $figure <= $limit end)};

# {OPERATION: {SIDE: {PLACE: {ENTRIES: nanoseconds}}}}
(reduce ($latency[].benchmarks[] | select(.aggregate_name == "median")) as $row
  ({}; setpath($row.run_name | split("/")[0:4]; $row.real_time))) as $times

| [6, 32, 100, 1000] as $entries
| ["tmpfs", "disk"] as $places
| {
    entries: $entries,
    operations: [
      $times | to_entries[] | select(.value.floor) | .key as $name | .value as $sides
      | $places[] as $place | $entries[] | tostring as $count
      | ($sides.cache[$place][$count]) as $cache | ($sides.floor[$place][$count]) as $floor
      | select($cache)
      | {name: $name, place: $place, entries: ($count | tonumber),
         nanoseconds: ($cache | rounded(1)), floor: ($floor | rounded(1)),
         ratio: (if $name == "flushExtra" then null else ratio($cache; $floor) | rounded(2) end)}
    ],
    peer: [
      $times | to_entries[] | select(.value["SQLite OFF"]) | .key as $name | .value as $sides
      | $places[] as $place | $entries[] | tostring as $count
      | ($sides | map_values(.[$place][$count] | rounded(1))) as $sides
      | select($sides["file cache"])
      | {name: $name, place: $place, entries: ($count | tonumber), nanoseconds: $sides}
    ],
    calls: (reduce (lines($calls)[] | split("\t")) as $row ({}; .[$row[0]] = ($row[1] | tonumber))),
    instructions: (reduce (lines($instructions)[] | split("\t")) as $row
      ({}; .[$row[0]][$row[1]] = ($row[2] | tonumber))),
    border: ($border | split(" ") | map(tonumber) | {
      java: .[0], native: .[1], beyond: (.[0] - .[1] | rounded(1))}),
    coldStart: (lines($coldStart) | map(tonumber) | {
      emptyProcess: .[0], process: .[1], emptyMachine: .[2], machine: .[3]}),
    weight: (lines($weight) | map(tonumber) | {
      bytes: .[0], symbols: .[1], loadMicroseconds: .[2],
      peakKiB: {nothing: .[3], "6": .[4], "1000": .[5]}})
  }
| def lookUp($count): first((.operations[]
    | select(.name == "getCacheEntry" and .place == "tmpfs" and .entries == $count)), {});
  .targets = [
    below("getCacheEntry, 6 entries"; lookUp(6).ratio; 1.5; "× floor"),
    below("getCacheEntry, 6 entries"; .instructions.getCacheEntry["6"]; 40000; "instructions"),
    below("getCacheEntry, 32 entries"; lookUp(32).ratio; 3; "× floor"),
    below("getCacheEntry, 32 entries"; .instructions.getCacheEntry["32"]; 200000; "instructions"),
    below("getCacheEntry, 1,000 entries"; lookUp(1000).ratio; 5; "× floor"),
    below("getCacheEntry, from 100 to 1,000 entries";
      ratio(lookUp(1000).nanoseconds; lookUp(100).nanoseconds); 11; "times"),
    below("a call from Java, beyond the native call"; .border.beyond / 1000; 1.5; "µs"),
    below("stripped library"; .weight.bytes / 1024; 250; "KiB")
  ]
# The columns of the chart, in microseconds.
| .chart = [
    $entries[] as $count
    | def time($name; $side; $place): $times[$name][$side][$place][$count | tostring];
      [time("getCacheEntry"; "cache"; "tmpfs"), time("getCacheEntry"; "floor"; "tmpfs"),
       time("getCacheEntry"; "cache"; "disk"), time("getCacheEntry"; "floor"; "disk"),
       time("get and promote"; "SQLite NORMAL"; "tmpfs")]
    | select(.[0]) | [$count] + map(. / 1000 | rounded(3))
  ]
