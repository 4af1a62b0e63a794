#!/bin/sh
# Times `mgrsrc list` of a resource file of 100,000 resources against reading the same file
# with `cat`, in one run, on a warm page cache, both writing to /dev/null. Prints the median
# of several timed runs of each and the ratio (goal: at most 5 x cat, and under 100 ms).
#
# Usage: mgrsrc_list.sh [mgrsrc binary] [runs]
#   binary defaults to build/release/mgrsrc, runs to 15. COUNT overrides the number of
#   resources.
#
# The file is made with python3: 100,000 resources in 8 types, each named, with 8 to 71
# bytes of data, laid out as the manager writes it.
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

python3 - "$file" "$count" <<'PY'
import struct, sys
path, count = sys.argv[1], int(sys.argv[2])
types = [b"T%03d" % t for t in range(8)]
per = [count // 8 + (1 if t < count % 8 else 0) for t in range(8)]
data, refs, names = bytearray(), bytearray(), bytearray()
type_list = struct.pack(">i", len(types) - 1)
offset = 4 + 12 * len(types)
n = 0
for t, k in zip(types, per):
    type_list += t + struct.pack(">ii", k - 1, offset)
    offset += 20 * k
    for i in range(k):
        body = bytes((n + j) & 0xFF for j in range(8 + n % 64))
        name = b"res%d" % n
        refs += struct.pack(">iiiii", i, len(names), 0, len(data), 0)
        names += bytes([len(name)]) + name
        data += struct.pack(">i", len(body)) + body + bytes(-len(body) % 4)
        n += 1
map_size = 52 + len(type_list) + len(refs) + len(names)
header = b"RSRC\r\n" + struct.pack(">h", 3) + b"TESTCRTR" + struct.pack(
    ">iiii", 32 + len(data), map_size, 32, len(data))
mapbytes = header + struct.pack(">iiiii", 0, 0, 0, 52, 52 + len(type_list) + len(refs))
with open(path, "wb") as f:
    f.write(header + data + mapbytes + type_list + refs + names)
PY
[ -s "$file" ] || { echo "mgrsrc_list: cannot make the file" >&2; exit 1; }

run_tool() {
    "$tool" list "$file" >/dev/null
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
i=0
while [ "$i" -lt "$runs" ]; do
    # Interleaved, so that drift in the machine's load falls on both alike.
    time_ns run_tool >>"$work/t_tool" || { echo "mgrsrc_list: mgrsrc failed" >&2; exit 1; }
    time_ns run_cat >>"$work/t_cat" || exit 1
    i=$((i + 1))
done
tool_ns=$(median <"$work/t_tool")
cat_ns=$(median <"$work/t_cat")
size=$(wc -c <"$file")

echo "mgrsrc_list: $count resources, $size bytes, median of $runs runs, warm cache"
printf '  %-28s %8s ms   (goal < 100 ms)\n' "mgrsrc list FILE" "$(ms "$tool_ns")"
printf '  %-28s %8s ms   list/cat %s x (goal <= 5)\n' "cat FILE" "$(ms "$cat_ns")" \
    "$(awk -v a="$tool_ns" -v b="$cat_ns" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "n/a" }')"
exit 0
