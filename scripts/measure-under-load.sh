#!/usr/bin/env bash
# Takes on a busy machine: starts LOOPS busy loops (default 4), runs the
# end-to-end take that checks every half-second stretch RUNS times (default
# 5) on a private PulseAudio server, and stops the loops. Each run prints the
# spread of its stretches' offsets and the record line (with its underruns),
# or the message naming the moment the take went out of sync, and the load
# average it ran under. Needs build/tests/tunebox_test_e2e.
#
#   scripts/measure-under-load.sh [RUNS] [LOOPS]
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-5}
loops=${2:-4}
busy=()
stop_loops() {
    for pid in "${busy[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
}
trap stop_loops EXIT
for _ in $(seq "$loops"); do
    (while :; do :; done) &
    busy+=($!)
done
for run in $(seq "$runs"); do
    echo "== run $run, load $(cut -d' ' -f1-3 /proc/loadavg)"
    ./build/tests/tunebox_test_e2e --gtest_filter='*EveryStretchLinesUp*' |
        grep -E "^\[ (stretches|take) \]|tunebox:|FAILED|Failure" || true
done
