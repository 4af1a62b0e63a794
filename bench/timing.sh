# Timing helpers shared by the benchmark scripts; sourced, not run.

now_ns() {
    date +%s%N
}

# Times one call of the named function in nanoseconds; fails when the call fails.
time_ns() {
    t0=$(now_ns)
    "$1" || return 1
    t1=$(now_ns)
    echo $((t1 - t0))
}

# The median of the numbers on standard input, one a line.
median() {
    sort -n | awk '{ v[NR] = $1 } END { if (NR % 2) print v[(NR + 1) / 2];
                                        else print int((v[NR / 2] + v[NR / 2 + 1]) / 2) }'
}

# Nanoseconds as milliseconds with one decimal.
ms() {
    awk -v ns="$1" 'BEGIN { printf "%.1f", ns / 1e6 }'
}
