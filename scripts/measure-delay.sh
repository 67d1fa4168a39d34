#!/usr/bin/env bash
# Repeats the end-to-end delay test (default 20 runs) on the private test
# sound server and reports the error of the position-derived delay against
# the cross-correlated round trip: the worst error of each run, then the
# median and the worst over all runs, in milliseconds.
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-20}
bash scripts/test-audio-server.sh start
trap 'bash scripts/test-audio-server.sh stop' EXIT
eval "$(bash scripts/test-audio-server.sh env)"
for _ in $(seq "$runs"); do
    ./build/tests/tunebox_test_e2e --gtest_filter='*PositionDelayMatches*' | grep '^\[ delay \]' || true
done | tee /dev/stderr | sed 's/.*worst error \([0-9.e-]*\) ms/\1/' | sort -g |
    awk '{ v[NR] = $1; if ($1 > 2) over++ }
         END { printf "runs %d, median %.3f ms, worst %.3f ms, runs over 2 ms: %d\n",
                      NR, v[int((NR + 1) / 2)], v[NR], over }'
