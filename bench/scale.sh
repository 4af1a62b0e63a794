#!/bin/sh
# How the resource work grows with the number of resources: times each of five operations at
# 10,000, 100,000 and 1,000,000 named resources and prints the growth factor per 10x (time at
# 10N / time at N). Linear work grows about 10x; the goal is at most 12x from 100k to 1M.
#
#   -r import   mxsbutil -c mod -d <dir>/ -r <file of N resources>
#   RAdd loop   N named resources added one by one to a new file, then closed (bench_resource)
#   load all    open, enumerate and load every resource, close (bench_resource)
#   list        mgrsrc list <file of N resources>
#   verify      mgrsrc verify <file of N resources>
#
# Usage: scale.sh [build directory] [runs]
#   the directory (default build/release) holds mxsbutil, mgrsrc and bench_resource; runs
#   (default 3) is the number of timed runs of each command, whose median counts. An operation
#   that takes longer than SCALE_LIMIT seconds (default 600) is stopped and shown as such.
#   The files are made with python3 (bench/make_rsrc.py), in a temporary directory that goes
#   at the end.
set -u
here=$(cd "$(dirname "$0")" && pwd)
. "$here/timing.sh"

build=${1:-build/release}
runs=${2:-3}
limit=${SCALE_LIMIT:-600}
sizes="10000 100000 1000000"

for b in mxsbutil mgrsrc bench_resource; do
    if [ ! -x "$build/$b" ]; then
        echo "scale: no $b in $build (build it with MG_BENCH=ON first)" >&2
        exit 1
    fi
done
build=$(cd "$build" && pwd)
check_bench_tools scale

work=$(mktemp -d "${TMPDIR:-/tmp}/mgscale.XXXXXX") || exit 1
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM
work=$(cd "$work" && pwd)
head -c 4096 /dev/zero >"$work/mod.dll"

# The median wall time of `runs` runs of "$@" in nanoseconds; "limit" when a run is stopped,
# "failed" when it fails.
median_of() {
    : >"$work/times"
    i=0
    while [ "$i" -lt "$runs" ]; do
        t0=$(now_ns)
        timeout "$limit" "$@" >/dev/null 2>&1
        status=$?
        t1=$(now_ns)
        [ "$status" -eq 124 ] && { echo limit; return; }
        [ "$status" -ne 0 ] && { echo failed; return; }
        echo $((t1 - t0)) >>"$work/times"
        i=$((i + 1))
    done
    median <"$work/times"
}

# A benchmark of bench_resource, as Google Benchmark measures it, in nanoseconds.
bench_ns() {
    rm -f "$work/bench.csv"
    TMPDIR=$work timeout "$limit" "$build/bench_resource" --benchmark_filter="^$1\$" \
        --benchmark_out="$work/bench.csv" --benchmark_out_format=csv \
        --benchmark_repetitions="$runs" --benchmark_report_aggregates_only=true \
        >/dev/null 2>&1
    status=$?
    [ "$status" -eq 124 ] && { echo limit; return; }
    [ -f "$work/bench.csv" ] || { echo failed; return; }
    awk -F, '$1 ~ /_median"?$/ {
            f = ($5 ~ /ms/) ? 1e6 : ($5 ~ /us/) ? 1e3 : ($5 ~ /ns/) ? 1 : 1e9
            printf "%.0f\n", $3 * f; found = 1 }
            END { if (!found) print "failed" }' "$work/bench.csv"
}

printf '%-22s' "resources"
for op in import "RAdd loop" "load all" list verify; do printf ' %12s' "$op"; done
echo
for n in $sizes; do
    python3 "$here/make_rsrc.py" "$work/src$n.rsrc" "$n" || exit 1
    t_import=$(median_of "$build/mxsbutil" -c mod -d "$work/" -r "$work/src$n.rsrc")
    t_add=$(bench_ns "BM_AddNamed/$n")
    t_load=$(bench_ns "BM_OpenAndLoadAll/$n")
    t_list=$(median_of "$build/mgrsrc" list "$work/src$n.rsrc")
    t_verify=$(median_of "$build/mgrsrc" verify "$work/src$n.rsrc")
    printf '%-22s' "$n"
    for t in $t_import $t_add $t_load $t_list $t_verify; do
        case $t in
        *[!0-9]*) printf ' %12s' "$t" ;;
        *) printf ' %9s ms' "$(ms "$t")" ;;
        esac
    done
    echo
    echo "$n $t_import $t_add $t_load $t_list $t_verify" >>"$work/table"
    rm -f "$work/src$n.rsrc" "$work/mod.msb"
done

echo
echo "growth per 10x (goal: at most 12 x from 100k to 1M)"
awk '{ for (i = 1; i <= 6; ++i) row[NR, i] = $i }
     END {
        split("import,RAdd loop,load all,list,verify", name, ",")
        for (r = 2; r <= NR; ++r) {
            printf "%-22s", row[r - 1, 1] " -> " row[r, 1]
            for (c = 2; c <= 6; ++c) {
                a = row[r - 1, c]; b = row[r, c]
                if (a ~ /^[0-9]+$/ && b ~ /^[0-9]+$/ && a > 0) printf " %10.1f x", b / a
                else printf " %12s", "n/a"
            }
            printf "\n"
        }
     }' "$work/table"
