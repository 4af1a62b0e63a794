#!/bin/sh
# The short fuzz run of CI: every target of fuzz/ runs a fixed number of executions from its
# corpus with a fixed seed, built with Clang, its fuzzer runtime (Debian: libclang-rt-14-dev)
# and the sanitizers, so that the same commit always runs the same inputs. Any crash, leak,
# sanitizer report or time-out fails the run; the input that caused it is kept in
# <build>/findings/ and printed in hex.
#
# usage: fuzz/ci.sh [BUILD_DIR]      SEED=n and SCALE=percent change the seed and run counts.
set -eu
cd "$(dirname "$0")/.."
build=${1:-build/fuzz-ci}
seed=${SEED:-1}
scale=${SCALE:-100}

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DMG_FUZZ=ON -DMG_SANITIZE=ON -DMG_WERROR=ON -DMG_TESTS=OFF -DMG_BENCH=OFF
cmake --build "$build" -j "${JOBS:-2}"

# Executions per target, about a minute each on one core of the machines CI runs on. A target
# without a line here gets the default.
runs_of() {
    case "$1" in
        numbers) echo 100000 ;;
        format) echo 50000 ;;
        paths) echo 25000 ;;
        resource_reader) echo 60000 ;;
        resource_editor) echo 25000 ;;
        resource_check) echo 80000 ;;
        *) echo 30000 ;;
    esac
}

# The resource targets write back through a scratch file, and a write-back flushes it to the
# disk; in memory, where the host has such a directory, the flushes cost nothing.
if [ -d /dev/shm ] && [ -w /dev/shm ]; then TMPDIR=/dev/shm; export TMPDIR; fi

findings="$build/findings"
rm -rf "$findings"
mkdir -p "$findings"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM
failed=""
for src in fuzz/*.cpp; do
    name=$(basename "$src" .cpp)
    case "$name" in replay | fuzz_support | resource_walk) continue ;; esac
    runs=$(($(runs_of "$name") * scale / 100))
    mkdir -p "$work/$name"
    echo "fuzz-ci: $name, $runs runs, seed $seed"
    # New inputs go to the scratch directory; the corpus itself stays as it is.
    if ! "$build/fuzz_$name" -runs="$runs" -seed="$seed" -detect_leaks=1 -timeout=30 \
        -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$findings/$name-" \
        "$work/$name" "fuzz/corpus/$name" >"$work/$name.log" 2>&1; then
        failed="$failed $name"
        tail -n 60 "$work/$name.log"
    fi
    grep -E '^stat::number_of_executed_units|^Done' "$work/$name.log" || true
done
for f in "$findings"/*; do
    [ -f "$f" ] || continue
    echo "fuzz-ci: finding $f"
    od -A x -t x1z "$f" | head -n 40
done
if [ -n "$failed" ]; then
    echo "fuzz-ci: FAILED:$failed"
    exit 1
fi
echo "fuzz-ci: every target passed"
