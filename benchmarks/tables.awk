# Turns the figures that scripts/bench collects into tables. Fails if an operation and its floor make
# different numbers of system calls: a ratio to such a floor would mean nothing.
BEGIN { FS = "\t" }
$1 == "count" { instructions[$2, $3, $4] = $5; calls[$2, $3, $4] = $6; sizes[$4] }
$1 == "count" && !known[$2]++ { order[++operations] = $2 }
$1 == "time" { time[$2, $3, $4, $5] = $6 }
# The least of all rounds: whatever else the machine does only adds to it.
$1 == "start" && !($2 in start && start[$2] < $3 / 1000) { start[$2] = $3 / 1000 }
$1 == "start" && !($2 in memory && memory[$2] < $4) { memory[$2] = $4 }
$1 == "call" { nanoseconds[$2] = $3; bytes[$2] = $4 }
$1 == "library" { library = $2 / 1024 }
$1 == "disk" { stores[++disks] = $2 ", " thousands($3); diskCalls[disks] = $4; syncs[disks] = $5 }
$1 == "bulk" { bulk[$2, $3] = $4; bulks[$2] }

function thousands(value,   digits) {
  value = value == "" ? "-" : sprintf("%.0f", value)
  digits = length(value)
  return digits <= 3 ? value : thousands(substr(value, 1, digits - 3)) "," substr(value, digits - 2)
}
function decimal(value, digits) { return value == "" ? "-" : sprintf("%." digits "f", value) }
function quotient(value, divisor) { return value == "" || !divisor ? "" : value / divisor }
function ratio(operation, entries) {
  return quotient(time["memory", operation, "cache", entries], time["memory", operation, "floor", entries])
}
function micro(place, operation) { return decimal(quotient(time[place, operation, "cache", 32], 1000), 1) }
function target(what, limit, unit, value, digits) {
  printf "| %s | %s %s | %s | %s |\n", what, (limit > 999) ? thousands(limit) : limit, unit,
    digits == 0 ? thousands(value) : decimal(value, digits),
    value == "" ? "not measured" : value <= limit ? "reached" : "**missed**"
}

# A value within the noise of zero is not printed as a figure.
function beyondNoise(value, noise, form) {
  return value < noise && value > -noise ? "not measurable" : sprintf(form, value)
}

function targets(   get) {
  print "\n| target | at most | measured | |\n| --- | --: | --: | --- |"
  get = "getCacheEntry"
  target(get ", 6 entries", 40000, "instructions", instructions[get, "cache", 6])
  target(get ", 32 entries", 200000, "instructions", instructions[get, "cache", 32])
  target(get ", 6 entries", 1.5, "× floor", ratio(get, 6), 2)
  target(get ", 32 entries", 3, "× floor", ratio(get, 32), 2)
  target(get ", 1,000 entries", 5, "× floor", ratio(get, 1000), 2)
  target(get ", 1,000 entries", 11, "× the time at 100",
    quotient(time["memory", get, "cache", 1000], time["memory", get, "cache", 100]), 2)
  target("`paths()`", 50, "ns", nanoseconds["paths()"], 1)
  target("`paths()`, allocated", 0, "bytes", bytes["paths()"])
  target("start with `ModelStore`, beyond an empty one", 2.5, "ms", start["store"] - start["nothing"], 1)
  target("stripped library", 250, "KiB", library, 1)
}

END {
  for (i = 1; i <= operations; ++i)
    for (entries in sizes)
      if (calls[order[i], "cache", entries] != calls[order[i], "floor", entries]) {
        print order[i] ", " entries " entries: the floor makes other system calls" >"/dev/stderr"
        exit 1
      }
  targets()

  print "\n| operation | instructions, 6 | 32 | system calls, 6 | 32 | × floor, 6 | 32 | 100 | 1,000 | µs, 32 | on disk |"
  print "| --- | --: | --: | --: | --: | --: | --: | --: | --: | --: | --: |"
  for (i = 1; i <= operations; ++i)
    printf "| %s | %s | %s | %s | %s | %s | %s | %s | %s | %s | %s |\n", order[i],
      thousands(instructions[order[i], "cache", 6]), thousands(instructions[order[i], "cache", 32]),
      thousands(calls[order[i], "cache", 6]), thousands(calls[order[i], "cache", 32]),
      decimal(ratio(order[i], 6), 2), decimal(ratio(order[i], 32), 2), decimal(ratio(order[i], 100), 2),
      decimal(ratio(order[i], 1000), 2), micro("memory", order[i]), micro("disk", order[i])

  print "\n| stores, among so many | system calls | syncs |\n| --- | --: | --: |"
  for (i = 1; i <= disks; ++i) printf "| %s | %d | %d |\n", stores[i], diskCalls[i], syncs[i]
  print "\n| | ms | beyond hashing and reading or writing |\n| --- | --: | --: |"
  for (name in bulks)
    printf "| %s | %.0f | %s |\n", name, bulk[name, "store"] / 1e6,
      beyondNoise(100 * (1 - bulk[name, "floor"] / bulk[name, "store"]), 5, "%.0f %%")

  print "\n| start of a virtual machine | time | peak memory |\n| --- | --: | --: |"
  printf "| empty | %.1f ms | %s KiB |\n", start["nothing"], thousands(memory["nothing"])
  split("load raw store", mode, " ")
  split("loads the library:four paths, raw classes:four paths, `ModelStore`", label, ":")
  for (i = 1; i <= 3; ++i)
    printf "| %s | %s | %+d KiB |\n", label[i],
      beyondNoise(start[mode[i]] - start["nothing"], 0.5, "%+.1f ms"), memory[mode[i]] - memory["nothing"]

  print "\n| call from Java | ns | bytes allocated |\n| --- | --: | --: |"
  for (name in bytes) printf "| `%s` | %.1f | %.0f |\n", name, nanoseconds[name], bytes[name]
}
