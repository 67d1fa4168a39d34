#!/bin/sh
# Minutes-long lame streams, VBR at every quality and one CBR, at 44.1, 32,
# 22.05 and 8 kHz, mono and stereo, decoded by the built-in decoder
# (`tunebox decode --decoder builtin --raw`) and by mpg123 (gapless, as a
# player gives them). One line per file: the two lengths in sample frames,
# the largest sample difference in LSB, and the frames the built-in decoder
# reported lost. Long enough that every frame size and reservoir case occurs.
# Usage: bench/vbr_sweep.sh [build-dir] [minutes] (about 10 minutes of work
# for five minutes of music on this project's two-core machines)
set -eu
build=${1:-build}
minutes=${2:-5}
tunebox="$build/src/tunebox"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Music-like sections, each different: a chord, a noise burst, plucked
# notes, a fading noise, a square bass under a high tone, then silence.
section() {
    i=$1
    low=$((110 + (i * 37) % 300))
    high=$((low * 3 / 2))
    sox -n -r 44100 -c 2 -b 16 "$work/section$i.wav" \
        synth 2.5 sine "$low" sine "$high" vol 0.5 : \
        synth 0.6 pinknoise vol 0.$((5 + i % 4)) : \
        synth 0.$((3 + i % 7)) sine 100 vol 0 : \
        synth 2.5 pluck "$high" pluck $((high * 4 / 3)) vol 0.9 : \
        synth 1.2 whitenoise fade 0 1.2 1.1 vol 0.5 : \
        synth 2 square $((low / 2)) sine $((high * 4)) vol 0.4
}
count=$((minutes * 60 / 10 + 1))
i=0
while [ "$i" -lt "$count" ]; do
    section "$i"
    i=$((i + 1))
done
sox "$work"/section*.wav "$work/music.wav" trim 0 "$((minutes * 60))"
rm -f "$work"/section*.wav

# The largest absolute difference of two WAV files, in LSB.
max_difference() {
    sox -m -v 1 "$1" -v -1 "$2" -n stat 2>&1 |
        awk '/Maximum amplitude|Minimum amplitude/ { v = $3 < 0 ? -$3 : $3; if (v > m) m = v }
             END { printf "%d", m * 32768 + 0.5 }'
}

printf '%-8s %-7s %-6s %10s %10s %8s %5s\n' rate layout mode builtin mpg123 maxdiff lost
for rate in 44100 32000 22050 8000; do
    for channels in 2 1; do
        sox -G "$work/music.wav" -r "$rate" -c "$channels" "$work/in.wav"
        layout=$([ "$channels" = 2 ] && echo stereo || echo mono)
        for mode in V0 V1 V2 V3 V4 V5 V6 V7 V8 V9 CBR; do
            options=$([ "$mode" = CBR ] && echo "-b 64" || echo "-V ${mode#V}")
            lame --quiet $options "$work/in.wav" "$work/s.mp3"
            "$tunebox" decode --overwrite --decoder builtin --raw "$work/s.mp3" "$work/b.wav" \
                2>"$work/err"
            mpg123 -q -w "$work/m.wav" "$work/s.mp3"
            lost=$(sed -n 's/.*could not decode \([0-9]*\) frames.*/\1/p' "$work/err")
            printf '%-8s %-7s %-6s %10s %10s %8s %5s\n' "$rate" "$layout" "$mode" \
                "$(soxi -s "$work/b.wav")" "$(soxi -s "$work/m.wav")" \
                "$(max_difference "$work/b.wav" "$work/m.wav")" "${lost:-0}"
        done
    done
done
