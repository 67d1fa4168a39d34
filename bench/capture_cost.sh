#!/usr/bin/env bash
# What a take costs through the virtual devices run faster than real time:
# CPU time per second of recorded audio and peak memory, for a short and a
# long take, so that memory growing with the take's length would show. Each
# take runs twice: with the header kept up to date during the take (as users
# run it) and with TUNEBOX_HEADER_REFRESH=off, to show what the refresh costs.
# On a busy machine whole takes vary more than the refresh costs;
# wav_writer_bench (built with -DTUNEBOX_BENCH=ON) measures the writer alone.
#
#   bench/capture_cost.sh [SHORT_SECONDS LONG_SECONDS SPEED RUNS]
#   (default 120 600 30 3; needs ./build; the runs alternate the two ways, and
#   the cost compares their sums)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
short=${1:-120}
long=${2:-600}
speed=${3:-30}
runs=${4:-3}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# CPU seconds of one take: user plus system.
take() {
    local seconds=$1 refresh=$2
    TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=$speed TUNEBOX_HEADER_REFRESH=$refresh \
        /usr/bin/time -f '%U %S %M' -o "time$seconds" \
        "$root/build/src/tunebox" record --accompaniment "song$seconds.wav" --output "take$seconds.wav" >/dev/null
    read -r user system peak <"time$seconds"
    awk -v s="$seconds" -v u="$user" -v y="$system" -v m="$peak" -v r="$refresh" 'BEGIN {
        printf "%4d s take, header refresh %-3s: CPU %.2f s (%.2f ms per second of audio), peak memory %.1f MiB\n",
            s, r, u + y, (u + y) * 1000 / s, m / 1024 }' >&2
    awk -v u="$user" -v y="$system" 'BEGIN { print u + y }'
}

compare() {
    local seconds=$1
    sox -n -r 44100 -c 2 -b 16 "song$seconds.wav" synth "$seconds" sine 440 vol 0.3
    local with=0 without=0
    for _ in $(seq "$runs"); do
        with=$(awk -v a="$with" -v b="$(take "$seconds" on)" 'BEGIN { print a + b }')
        without=$(awk -v a="$without" -v b="$(take "$seconds" off)" 'BEGIN { print a + b }')
    done
    awk -v s="$seconds" -v a="$with" -v b="$without" -v n="$runs" 'BEGIN {
        printf "%4d s take over %d runs: %.2f ms CPU per second of audio with the header refresh, %.2f without (%+.1f %%)\n",
            s, n, a * 1000 / (s * n), b * 1000 / (s * n), (b > 0) ? (a - b) * 100 / b : 0 }'
}

compare "$short"
compare "$long"
