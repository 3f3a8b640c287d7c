# The time of a look-up against the number of entries. `data` is the table, its columns those below.
set terminal svg size 760,480 font "sans-serif,13" background "white"
set logscale xy
set xlabel "entries"
set ylabel "microseconds"
set xtics (6, 32, 100, 1000)
set xrange [5:1200]
set grid ytics
set key outside below center maxcols 2
set style data linespoints
plot data using 1:2 title "getCacheEntry, in memory" lw 2 lc rgb "#1f5fa8" pt 7, \
     data using 1:3 title "its floor: the system calls alone" lw 2 lc rgb "#888888" pt 7, \
     data using 1:4 title "getCacheEntry, on disk" lw 1 lc rgb "#1f5fa8" dt 2 pt 6, \
     data using 1:5 title "its floor" lw 1 lc rgb "#888888" dt 2 pt 6, \
     data using 1:6 title "get and promote on SQLite NORMAL, in memory" lw 2 lc rgb "#c0602a" pt 7
