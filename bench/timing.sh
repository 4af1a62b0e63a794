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

# The mgrsrc scripts' checks, as `check_mgrsrc_bench NAME TOOL`: ends the script when the
# tool isn't built (status 1), or python3 or a date(1) with nanoseconds is missing (skipped,
# status 0).
check_mgrsrc_bench() {
    if [ ! -x "$2" ]; then
        echo "$1: no mgrsrc at $2 (build it first)" >&2
        exit 1
    fi
    if ! command -v python3 >/dev/null 2>&1; then
        echo "$1: skipped, python3 is needed to make the input" >&2
        exit 0
    fi
    case $(date +%N) in
    *[!0-9]* | "")
        echo "$1: skipped, this date(1) has no nanoseconds" >&2
        exit 0
        ;;
    esac
}
