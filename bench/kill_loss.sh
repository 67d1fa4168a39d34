#!/usr/bin/env bash
# How much of a take a SIGKILL costs: takes through the virtual devices in
# real time, each killed at a random moment, and the seconds of audio each
# loses: time alive, less the audio its file declares, less the start-up
# (how long after its launch a normal take creates its file and starts
# capturing, the mean of three).
#
#   bench/kill_loss.sh [KILLS FROM_SECONDS TO_SECONDS]
#   (default 20 2 8; needs ./build)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
kills=${1:-20}
from=${2:-2}
to=${3:-8}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export TUNEBOX_AUDIO=virtual TUNEBOX_CONFIG_DIR=$work

now() { date +%s.%N; }
declared() { sox --i -D "$1"; }
elapsed() { awk -v a="$1" -v b="$2" 'BEGIN { print b - a }'; }

sox -n -r 44100 -c 2 -b 16 song.wav synth $((to + 4)) sine 440 vol 0.3
sox -n -r 44100 -c 2 -b 16 short.wav synth 3 sine 440 vol 0.3

startup_of_a_normal_take() {
    local start
    start=$(now)
    "$root/build/src/tunebox" record --accompaniment short.wav --output normal.wav >/dev/null &
    until [ -e normal.wav ]; do sleep 0.005; done
    elapsed "$start" "$(now)"
    wait $!
    rm normal.wav
}
startup=$(for _ in 1 2 3; do startup_of_a_normal_take; done | awk '{ sum += $1 } END { print sum / NR }')
echo "start-up of a normal take: $startup s"

for i in $(seq "$kills"); do
    wait_for=$(awk -v s="$RANDOM" -v a="$from" -v b="$to" 'BEGIN { printf "%.2f", a + (b - a) * s / 32767 }')
    start=$(now)
    "$root/build/src/tunebox" record --accompaniment song.wav --output "take$i.wav" >/dev/null &
    pid=$!
    sleep "$wait_for"
    kill -KILL "$pid"
    alive=$(elapsed "$start" "$(now)")
    { wait "$pid"; } 2>/dev/null || true
    awk -v i="$i" -v t="$alive" -v d="$(declared "take$i.wav")" -v s="$startup" \
        'BEGIN { printf "kill %2d after %.2f s: %.2f s in the file, %.2f s lost\n", i, t, d, t - d - s }'
done | tee kills
awk '{ print $(NF - 2) }' kills | sort -n | awk '
    { lost[NR] = $1 }
    END {
        median = NR % 2 ? lost[(NR + 1) / 2] : (lost[NR / 2] + lost[NR / 2 + 1]) / 2
        printf "seconds lost over %d kills: worst %.2f, median %.2f\n", NR, lost[NR], median
    }'
