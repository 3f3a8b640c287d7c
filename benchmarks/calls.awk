# From what strace saw of `steps`: a line per system call, "OPERATION<tab>CALL PATH FLAGS", without
# results. Calls of the allocator are left out: they depend on the heap and not on the operation.
/"\/begin\// { split($0, quoted, "\""); operation = substr(quoted[2], 8); next }
/"\/end"/ { operation = ""; next }
operation == "" || /^(brk|mmap|munmap|mremap|madvise)\(/ { next }
{
  sub(/\) += .*/, "")          # the result
  sub(/, \{.*/, "")            # what a status returned
  sub(/, 0x[0-9a-f]+.*/, "")   # buffers
  print operation "\t" $0
}
