#!/bin/sh
# What playing costs: CPU time (user + system) per second of audio while
# `tunebox play` plays a generated file through the virtual output device at
# real-time speed, with the echo off and on; and the peak memory (max RSS)
# for a 10-second and a 10-minute file, which must be the same since the
# player only ever holds its few buffers. The memory runs use the virtual
# devices' speed-up: it changes how long they take, not what they hold.
# Usage: bench/playback_cpu.sh [build-dir] [seconds-of-audio]
set -eu
build=${1:-build}
seconds=${2:-60}
tunebox=$(cd "$build" && pwd)/src/tunebox
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"  # the diagnostic log goes to the working directory

sox -n -r 44100 -c 2 -b 16 -e signed cpu.wav synth "$seconds" pinknoise vol 0.5
sox -n -r 44100 -c 2 -b 16 -e signed short.wav synth 10 pinknoise vol 0.5
sox -n -r 44100 -c 2 -b 16 -e signed long.wav synth 600 pinknoise vol 0.5

# Prints "user+system max-rss-kB" of one play.
measure() {
    /usr/bin/time -f '%U %S %M' "$@" 2>&1 >/dev/null </dev/null | tail -n 1 |
        awk '{printf "%.3f %d\n", $1 + $2, $3}'
}

for echo in "" --echo; do
    set -- $(TUNEBOX_AUDIO=virtual measure "$tunebox" play cpu.wav $echo)
    awk -v cpu="$1" -v s="$seconds" -v label="${echo:-no echo}" 'BEGIN {
        printf "play, %-8s: %.3f s CPU for %d s of audio = %.2f ms CPU per second of audio (%.3f%% of a core)\n",
               label, cpu, s, 1000 * cpu / s, 100 * cpu / s }'
done

for file in short long; do
    set -- $(TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=50 measure "$tunebox" play $file.wav)
    echo "peak memory, $file.wav: $2 kB"
done
