#!/bin/sh
# Packages a 256 MiB module and compares the run with plain copies of the same bytes, in one
# run, on a warm page cache:
#   tool        mxsbutil -c big -d <dir>/
#   copy        cat big.dll > copy
#   copy+fsync  the same, then the copy flushed to disk (the tool flushes its package when it
#               closes it, so this is the like-for-like peer)
#   dd          dd if=big.dll of=copy bs=1M conv=fsync, the same in one program
#   -vi         mxsbutil -c big -d <dir>/ -vi <dir>/target.vi, replacing the module of a
#               256 MiB package; with MB_VI_PEER set to another mxsbutil binary, that one's -vi
#               is timed in the same runs (on its own copy of the target) and the ratio shown
# Prints the median of several timed runs of each, the ratios, and the peak resident memory of
# packaging and of -vi against the module's size.
#
# Usage: package_256m.sh [mxsbutil binary] [runs]
#   binary defaults to build/release/mxsbutil, runs to 7. MB_SIZE_MIB overrides the size.
#
# Needs only what the build does (a POSIX shell and coreutils). Peak memory comes from GNU
# time if present, else from python3's getrusage, else from polling /proc/<pid>/status
# (VmHWM), which can miss the last moments of the run and so gives a lower bound.
set -u
. "$(dirname "$0")/timing.sh"

tool=${1:-build/release/mxsbutil}
runs=${2:-7}
size_mib=${MB_SIZE_MIB:-256}
size=$((size_mib * 1048576))

case $tool in
/*) ;;
*) tool=$(pwd)/$tool ;;
esac
if [ ! -x "$tool" ]; then
    echo "package_256m: no mxsbutil at $tool (build it first)" >&2
    exit 1
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/mxsb256.XXXXXX") || exit 1
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM
# The directory must be absolute, and -d takes it with its separator.
work=$(cd "$work" && pwd)

# Room for the module, its package, the copy and the -vi targets with their new files.
free_kib=$(df -Pk "$work" | awk 'NR == 2 { print $4 }')
if [ -n "$free_kib" ] && [ "$free_kib" -lt $((size / 1024 * 7 + 65536)) ]; then
    echo "package_256m: skipped, $work has only $((free_kib / 1024)) MiB free" >&2
    exit 0
fi

if ! head -c "$size" /dev/urandom >"$work/big.dll" 2>/dev/null; then
    echo "package_256m: cannot make the module" >&2
    exit 1
fi

case $(date +%N) in
*[!0-9]* | "")
    echo "package_256m: skipped, this date(1) has no nanoseconds" >&2
    exit 0
    ;;
esac
# sync(1) flushes one file where it can; an old one flushes everything, which costs more.
if sync "$work/big.dll" 2>/dev/null; then
    flush_copy() { sync "$work/copy"; }
else
    flush_copy() { sync; }
fi

run_tool() {
    "$tool" -c big -d "$work/" 2>/dev/null
}
run_copy() {
    cat "$work/big.dll" >"$work/copy"
}
run_copy_fsync() {
    cat "$work/big.dll" >"$work/copy" && flush_copy
}
run_dd() {
    dd if="$work/big.dll" of="$work/copy" bs=1M conv=fsync 2>/dev/null
}
run_vi() {
    "$tool" -c big -d "$work/" -vi "$work/target.vi" 2>/dev/null
}
vi_peer=${MB_VI_PEER:-}
run_vi_peer() {
    "$vi_peer" -c big -d "$work/" -vi "$work/peer.vi" 2>/dev/null
}

ratio() {
    awk -v a="$1" -v b="$2" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "n/a" }'
}

# Peak resident memory in KiB of one run of the tool with the arguments given, and the way it
# was measured.
if /usr/bin/time -f %M true >/dev/null 2>&1; then
    rss_how="GNU time"
    peak_kib() {
        /usr/bin/time -f %M -o "$work/rss" "$tool" "$@" 2>/dev/null || return 1
        tail -n 1 "$work/rss"
    }
elif command -v python3 >/dev/null 2>&1; then
    rss_how="getrusage"
    peak_kib() {
        python3 -c '
import resource, subprocess, sys
status = subprocess.call(sys.argv[1:], stderr=subprocess.DEVNULL)
print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)
sys.exit(status)' "$tool" "$@"
    }
else
    rss_how="VmHWM polling, a lower bound"
    peak_kib() {
        "$tool" "$@" 2>/dev/null &
        pid=$!
        hwm=0
        while [ -r "/proc/$pid/status" ]; do
            v=$(awk '/^VmHWM:/ { print $2 }' "/proc/$pid/status" 2>/dev/null)
            [ -n "$v" ] && [ "$v" -gt "$hwm" ] && hwm=$v
            sleep 0.005 2>/dev/null || sleep 1
        done
        wait "$pid" || return 1
        echo "$hwm"
    }
fi

# Warm-up: the module is in the page cache and every output file exists before timing.
if ! run_tool; then
    echo "package_256m: mxsbutil failed with status $?" >&2
    exit 1
fi
run_copy_fsync
cp "$work/big.msb" "$work/target.vi"
run_vi || { echo "package_256m: mxsbutil -vi failed" >&2; exit 1; }
if [ -n "$vi_peer" ]; then
    cp "$work/big.msb" "$work/peer.vi"
    run_vi_peer || { echo "package_256m: $vi_peer -vi failed" >&2; exit 1; }
fi

: >"$work/t_tool"
: >"$work/t_copy"
: >"$work/t_sync"
: >"$work/t_dd"
: >"$work/t_vi"
: >"$work/t_vipeer"
i=0
while [ "$i" -lt "$runs" ]; do
    # Interleaved, so that drift in the machine's load falls on all three alike, and each
    # after an untimed sync, so that no run pays for writing back the one before it.
    sync
    time_ns run_tool >>"$work/t_tool" || { echo "package_256m: mxsbutil failed" >&2; exit 1; }
    sync
    time_ns run_copy >>"$work/t_copy" || exit 1
    sync
    time_ns run_copy_fsync >>"$work/t_sync" || exit 1
    sync
    time_ns run_dd >>"$work/t_dd" || exit 1
    # The two -vi runs take turns at going first: the first after the copies pays for
    # memory the others left cold.
    if [ -n "$vi_peer" ] && [ $((i % 2)) -eq 1 ]; then
        sync
        time_ns run_vi_peer >>"$work/t_vipeer" || exit 1
    fi
    sync
    time_ns run_vi >>"$work/t_vi" || { echo "package_256m: mxsbutil -vi failed" >&2; exit 1; }
    if [ -n "$vi_peer" ] && [ $((i % 2)) -eq 0 ]; then
        sync
        time_ns run_vi_peer >>"$work/t_vipeer" || exit 1
    fi
    i=$((i + 1))
done

: >"$work/rss_all"
: >"$work/rss_vi"
i=0
while [ "$i" -lt 3 ]; do
    peak_kib -c big -d "$work/" >>"$work/rss_all" ||
        { echo "package_256m: mxsbutil failed" >&2; exit 1; }
    peak_kib -c big -d "$work/" -vi "$work/target.vi" >>"$work/rss_vi" ||
        { echo "package_256m: mxsbutil -vi failed" >&2; exit 1; }
    i=$((i + 1))
done

tool_ns=$(median <"$work/t_tool")
copy_ns=$(median <"$work/t_copy")
sync_ns=$(median <"$work/t_sync")
dd_ns=$(median <"$work/t_dd")
vi_ns=$(median <"$work/t_vi")
peak=$(sort -n "$work/rss_all" | tail -n 1)
peak_vi=$(sort -n "$work/rss_vi" | tail -n 1)
module_kib=$((size / 1024))
limit_kib=$((module_kib + 16384))

echo "package_256m: ${size_mib} MiB module, median of $runs runs, warm cache"
printf '  %-28s %9s ms\n' "mxsbutil -c big -d <dir>/" "$(ms "$tool_ns")"
printf '  %-28s %9s ms   tool/copy  %s x (goal <= 1.3)\n' "cat big.dll > copy" \
    "$(ms "$copy_ns")" "$(ratio "$tool_ns" "$copy_ns")"
printf '  %-28s %9s ms   tool/copy+fsync  %s x\n' "cat > copy; sync copy" \
    "$(ms "$sync_ns")" "$(ratio "$tool_ns" "$sync_ns")"
printf '  %-28s %9s ms   tool/dd  %s x (goal <= 1.3)\n' "dd ... conv=fsync" \
    "$(ms "$dd_ns")" "$(ratio "$tool_ns" "$dd_ns")"
printf '  %-28s %9s ms   -vi/copy+fsync  %s x\n' "mxsbutil ... -vi target.vi" \
    "$(ms "$vi_ns")" "$(ratio "$vi_ns" "$sync_ns")"
if [ -n "$vi_peer" ]; then
    vipeer_ns=$(median <"$work/t_vipeer")
    printf '  %-28s %9s ms   -vi/peer -vi  %s x (goal <= 1.3)\n' "peer ... -vi peer.vi" \
        "$(ms "$vipeer_ns")" "$(ratio "$vi_ns" "$vipeer_ns")"
fi
for run in package -vi; do
    k=$peak
    [ "$run" = -vi ] && k=$peak_vi
    printf '  peak RSS of %-8s %s MiB = module + %s MiB (goal <= module + 16 MiB; %s)\n' "$run" \
        "$(awk -v k="$k" 'BEGIN { printf "%.1f", k / 1024 }')" \
        "$(awk -v k="$k" -v m="$module_kib" 'BEGIN { printf "%.1f", (k - m) / 1024 }')" \
        "$rss_how"
    if [ "$k" -gt "$limit_kib" ]; then
        echo "  peak memory of $run over the goal"
    fi
done
exit 0
