#!/bin/sh
# Times `mgrsrc pack` of a folder of small resources and `mgrsrc unpack` of the file it makes,
# each against `cp -r` of the same folder, in one run, on a warm page cache, at 10,000 and at
# 100,000 resources. Prints the median of several timed runs of each, the ratios to cp -r
# (goal: at most 3 x) and how each grows from the small folder to the large one (goal: at most
# 12 x for 10 x the resources, that is linear).
#
# Usage: mgrsrc_pack.sh [mgrsrc binary] [runs]
#   binary defaults to build/release/mgrsrc, runs to 5. COUNTS overrides the two sizes; the
#   folders go to TMPDIR (e.g. /dev/shm, to time the tool rather than the disk).
#
# The folder is made with python3 as unpack writes it: resources in 8 types, each named, with
# 8 to 71 bytes of data, one data file each, and resources.json.
set -u
. "$(dirname "$0")/timing.sh"

tool=${1:-build/release/mgrsrc}
runs=${2:-5}
counts=${COUNTS:-10000 100000}

check_mgrsrc_bench mgrsrc_pack "$tool"

work=$(mktemp -d "${TMPDIR:-/tmp}/mgrsrc.XXXXXX") || exit 1
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM

make_folder() {
    python3 - "$1" "$2" <<'PY'
import json, os, sys
path, count = sys.argv[1], int(sys.argv[2])
os.makedirs(path)
lines = []
for n in range(count):
    t, i = n % 8, n // 8
    name = "T%03d_%d.bin" % (t, i)
    with open(os.path.join(path, name), "wb") as f:
        f.write(bytes((n + j) & 0xFF for j in range(8 + n % 64)))
    lines.append(json.dumps({"type": "T%03d" % t, "id": i, "name": "res%d" % n,
                             "attributes": "none", "file": name}))
with open(os.path.join(path, "resources.json"), "w") as f:
    f.write('{\n  "version": 3,\n  "fileType": "TEST",\n  "creator": "CRTR",\n'
            '  "resources": [\n    ' + ",\n    ".join(lines) + "\n  ]\n}\n")
PY
}

# Median nanoseconds of `runs` interleaved runs of the two functions, each after `prepare`.
time_pair() {
    : >"$work/t_a"
    : >"$work/t_b"
    i=0
    while [ "$i" -lt "$runs" ]; do
        prepare
        time_ns "$1" >>"$work/t_a" || { echo "mgrsrc_pack: $1 failed" >&2; exit 1; }
        prepare
        time_ns "$2" >>"$work/t_b" || exit 1
        i=$((i + 1))
    done
    a_ns=$(median <"$work/t_a")
    b_ns=$(median <"$work/t_b")
}

ratio() {
    awk -v a="$1" -v b="$2" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "n/a" }'
}

# Each timed run starts with nothing of the last one still to be written out.
prepare() {
    rm -rf "$work/out" "$work/copy" "$work/file"
    sync
}
run_pack() {
    "$tool" pack "$work/folder" "$work/file" >/dev/null
}
run_unpack() {
    "$tool" unpack "$work/packed" "$work/out" >/dev/null
}
run_cp() {
    cp -r "$work/folder" "$work/copy"
}

echo "mgrsrc_pack: median of $runs runs, warm cache"
for count in $counts; do
    rm -rf "$work/folder" "$work/packed"
    make_folder "$work/folder" "$count" || { echo "mgrsrc_pack: cannot make the folder" >&2; exit 1; }
    "$tool" pack "$work/folder" "$work/packed" >/dev/null || { echo "mgrsrc_pack: pack failed" >&2; exit 1; }
    time_pair run_pack run_cp
    pack_ns=$a_ns
    cp_ns=$b_ns
    time_pair run_unpack run_cp
    unpack_ns=$a_ns
    cp2_ns=$b_ns
    printf '  %7d resources: pack %8s ms, cp -r %8s ms, pack/cp %s x (goal <= 3)\n' "$count" \
        "$(ms "$pack_ns")" "$(ms "$cp_ns")" "$(ratio "$pack_ns" "$cp_ns")"
    printf '  %7d resources: unpack %6s ms, cp -r %8s ms, unpack/cp %s x (goal <= 3)\n' \
        "$count" "$(ms "$unpack_ns")" "$(ms "$cp2_ns")" "$(ratio "$unpack_ns" "$cp2_ns")"
    if [ -n "${first_pack:-}" ]; then
        printf '  growth from %d: pack %s x, unpack %s x (goal <= 12 for 10 x)\n' "$first_count" \
            "$(ratio "$pack_ns" "$first_pack")" "$(ratio "$unpack_ns" "$first_unpack")"
    else
        first_count=$count
        first_pack=$pack_ns
        first_unpack=$unpack_ns
    fi
done
exit 0
