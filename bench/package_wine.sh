#!/bin/sh
# Packages a 64 MiB module with the Windows build under Wine and compares the run with Wine's
# own `copy` of the same bytes, in one run, on a warm page cache. Both pay Wine's start of a
# process, so the ratio is of like with like. Information only: there is no goal.
#
# Usage: package_wine.sh [mxsbutil.exe] [runs]
#   defaults build/mingw32/mxsbutil.exe and 5 runs; MB_SIZE_MIB overrides the size.
# Runs in the prefix of `make test-windows` (cmake/wine-env.sh), with its server kept.
set -u
. "$(dirname "$0")/timing.sh"

tool=${1:-build/mingw32/mxsbutil.exe}
runs=${2:-5}
size_mib=${MB_SIZE_MIB:-64}

[ -f "$tool" ] || { echo "package_wine: no $tool (make test-windows first)" >&2; exit 1; }
env=$(sh cmake/wine-env.sh build) || exit 1
eval "$env"

work=$(mktemp -d "${TMPDIR:-/tmp}/mxsbwine.XXXXXX") || exit 1
trap 'rm -rf "$work"' EXIT
work=$(cd "$work" && pwd)
head -c $((size_mib * 1048576)) /dev/urandom >"$work/big.dll" || exit 1
# Wine shows the host's root as drive Z:.
win="Z:$(echo "$work" | tr / '\\')"

run_tool() { wine "$tool" -c big -d "$win\\" >/dev/null 2>&1; }
run_copy() { wine cmd /c copy /b /y "$win\\big.dll" "$win\\copy.dll" >/dev/null 2>&1; }
run_tool || { echo "package_wine: mxsbutil.exe failed" >&2; exit 1; }
run_copy || { echo "package_wine: copy failed" >&2; exit 1; }
: >"$work/t_tool"
: >"$work/t_copy"
i=0
while [ "$i" -lt "$runs" ]; do
    sync
    time_ns run_tool >>"$work/t_tool" || exit 1
    sync
    time_ns run_copy >>"$work/t_copy" || exit 1
    i=$((i + 1))
done
cmp -s "$work/big.dll" "$work/copy.dll" || { echo "package_wine: the copy differs" >&2; exit 1; }
tool_ns=$(median <"$work/t_tool")
copy_ns=$(median <"$work/t_copy")
echo "package_wine: ${size_mib} MiB module under Wine, median of $runs runs, warm cache"
awk -v t="$tool_ns" -v c="$copy_ns" 'BEGIN {
    printf "  %-34s %9.1f ms\n", "mxsbutil.exe -c big -d <dir>\\", t / 1e6
    printf "  %-34s %9.1f ms   tool/copy  %.2f x\n", "cmd /c copy /b big.dll copy.dll", c / 1e6, t / c
}'
