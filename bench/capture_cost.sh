#!/usr/bin/env bash
# What a take costs through the virtual devices run faster than real time:
# CPU time per second of recorded audio and peak memory, for a short and a
# long take, so that memory growing with the take's length would show.
#
#   bench/capture_cost.sh [SHORT_SECONDS LONG_SECONDS SPEED]
#   (default 120 600 30; needs ./build)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
short=${1:-120}
long=${2:-600}
speed=${3:-30}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

take() {
    local seconds=$1
    sox -n -r 44100 -c 2 -b 16 "song$seconds.wav" synth "$seconds" sine 440 vol 0.3
    TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=$speed /usr/bin/time -f '%U %S %M' -o "time$seconds" \
        "$root/build/src/tunebox" record --accompaniment "song$seconds.wav" --output "take$seconds.wav" >/dev/null
    read -r user system peak <"time$seconds"
    awk -v s="$seconds" -v u="$user" -v y="$system" -v m="$peak" 'BEGIN {
        printf "%4d s take: CPU %.2f s (%.2f ms per second of audio), peak memory %.1f MiB\n",
            s, u + y, (u + y) * 1000 / s, m / 1024 }'
}

take "$short"
take "$long"
