#!/bin/sh
# The whole effect chain (ten equaliser bands, then reverb) against sox doing
# the same work (ten `equalizer` effects at the same centres, then `reverb`)
# on the same generated file, both on one core, in CPU seconds.
# Usage: bench/effects_vs_sox.sh [build-dir] [seconds-of-audio]
set -eu
build=${1:-build}
seconds=${2:-60}
bench="$build/bench/effects_bench"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sox -n -r 44100 -c 2 -b 16 -e signed "$work/in.wav" synth "$seconds" pinknoise vol 0.5
sox "$work/in.wav" -t raw -e signed -b 16 "$work/in.raw"

# Band centres of the chain (the tenth lies above half the sample rate, which
# sox refuses; it gets 20 kHz) with the gains of the benchmark's band values.
bands="equalizer 64 3q 5 equalizer 161.1 3q 2.5 equalizer 255.8 3q 0
       equalizer 644.7 3q -2.5 equalizer 1624.4 3q -3.75 equalizer 2578.5 3q -1.25
       equalizer 6497.5 3q 1.25 equalizer 10314.1 3q 3.75 equalizer 16372.5 3q 6.25
       equalizer 20000 3q 0"

cpu_seconds() {
    /usr/bin/time -f '%U %S' "$@" 2>&1 >/dev/null | tail -n 1 | awk '{print $1 + $2}'
}

# shellcheck disable=SC2086
sox_total=$(cpu_seconds sox --single-threaded -D "$work/in.wav" "$work/sox.wav" $bands reverb)
sox_copy=$(cpu_seconds sox --single-threaded -D "$work/in.wav" "$work/copy.wav")
ours=$(TUNEBOX_BENCH_PCM="$work/in.raw" "$bench" --benchmark_filter='^ChainOnFile$' \
    --benchmark_format=csv 2>/dev/null | awk -F, '/ChainOnFile/ {print $4 / 1000}')
# cpu_time column is in milliseconds

awk -v s="$seconds" -v total="$sox_total" -v copy="$sox_copy" -v ours="$ours" 'BEGIN {
    net = total - copy
    printf "audio: %d s of stereo 44.1 kHz pink noise\n", s
    printf "sox, read + effects + write:   %7.3f s CPU (%6.0fx real time)\n", total, s / total
    printf "sox, effects only (minus copy): %7.3f s CPU (%6.0fx real time)\n", net, s / net
    printf "tunebox chain:                 %7.3f s CPU (%6.0fx real time)\n", ours, s / ours
    printf "ratio, tunebox faster than sox: %.1fx (effects only), %.1fx (sox end to end)\n",
        net / ours, total / ours
}'
