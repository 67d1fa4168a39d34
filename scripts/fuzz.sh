#!/usr/bin/env bash
# Runs every fuzz target built in ./build-fuzz for the given seconds each,
# starting from the kept corpus. New findings go to fuzz/artifacts/.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
# Stop at undefined behaviour: by default it is only reported and the run
# goes on, so a finding would leave no crashing input behind.
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-halt_on_error=1:print_stacktrace=1}"
# Leaks inside system libraries are listed there; ours still fail the run.
export LSAN_OPTIONS="${LSAN_OPTIONS:-suppressions=$PWD/scripts/lsan-suppressions.txt}"
mkdir -p fuzz/artifacts
for source in fuzz/fuzz_*.cpp; do
    name=$(basename "$source" .cpp)
    work=$(mktemp -d)
    cp -r "fuzz/corpus/$name/." "$work/" 2>/dev/null || true
    echo "-- $name for ${seconds}s"
    "build-fuzz/fuzz/$name" -max_total_time="$seconds" -artifact_prefix=fuzz/artifacts/ \
        -print_final_stats=0 "$work" 2>&1 | tail -n 2
    rm -rf "$work"
done
