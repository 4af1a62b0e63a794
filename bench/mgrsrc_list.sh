#!/bin/sh
# Times `mgrsrc list` and `mgrsrc verify` of a resource file of 100,000 resources against
# reading the same file with `cat`, in one run, on a warm page cache, all writing to /dev/null.
# Prints the median of several timed runs of each and the ratios (goal: at most 5 x cat, and
# list under 100 ms).
#
# Usage: mgrsrc_list.sh [mgrsrc binary] [runs]
#   binary defaults to build/release/mgrsrc, runs to 15. COUNT overrides the number of
#   resources.
#
# The file is made with python3 (make_rsrc.py): 100,000 resources in 8 types, each named,
# with 8 to 71 bytes of data, laid out as the manager writes it.
set -u
. "$(dirname "$0")/timing.sh"

tool=${1:-build/release/mgrsrc}
runs=${2:-15}
count=${COUNT:-100000}

check_mgrsrc_bench mgrsrc_list "$tool"

work=$(mktemp -d "${TMPDIR:-/tmp}/mgrsrc.XXXXXX") || exit 1
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM
file=$work/many.rsrc

python3 "$(dirname "$0")/make_rsrc.py" "$file" "$count"
[ -s "$file" ] || { echo "mgrsrc_list: cannot make the file" >&2; exit 1; }

run_tool() {
    "$tool" list "$file" >/dev/null
}
run_verify() {
    "$tool" verify "$file" >/dev/null
}
run_cat() {
    cat "$file" >/dev/null
}
# Warm-up, and a check that the tool lists every resource.
lines=$("$tool" list "$file" | wc -l)
if [ "$lines" -lt "$count" ]; then
    echo "mgrsrc_list: mgrsrc listed $lines lines for $count resources" >&2
    exit 1
fi
run_cat

: >"$work/t_tool"
: >"$work/t_cat"
: >"$work/t_verify"
i=0
while [ "$i" -lt "$runs" ]; do
    # Interleaved, so that drift in the machine's load falls on both alike.
    time_ns run_tool >>"$work/t_tool" || { echo "mgrsrc_list: mgrsrc failed" >&2; exit 1; }
    time_ns run_cat >>"$work/t_cat" || exit 1
    time_ns run_verify >>"$work/t_verify" || { echo "mgrsrc_list: verify failed" >&2; exit 1; }
    i=$((i + 1))
done
tool_ns=$(median <"$work/t_tool")
cat_ns=$(median <"$work/t_cat")
verify_ns=$(median <"$work/t_verify")
size=$(wc -c <"$file")

echo "mgrsrc_list: $count resources, $size bytes, median of $runs runs, warm cache"
printf '  %-28s %8s ms   (goal < 100 ms)\n' "mgrsrc list FILE" "$(ms "$tool_ns")"
ratio() {
    awk -v a="$1" -v b="$2" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "n/a" }'
}
printf '  %-28s %8s ms   list/cat %s x (goal <= 5)\n' "cat FILE" "$(ms "$cat_ns")" \
    "$(ratio "$tool_ns" "$cat_ns")"
printf '  %-28s %8s ms   verify/cat %s x (goal <= 5)\n' "mgrsrc verify FILE" \
    "$(ms "$verify_ns")" "$(ratio "$verify_ns" "$cat_ns")"
exit 0
