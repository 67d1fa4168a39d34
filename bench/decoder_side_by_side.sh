#!/usr/bin/env bash
# The built-in MPEG audio decoder, libmpg123 and ffmpeg side by side on the
# same files: a music-like signal of some minutes encoded by lame at
# 128 kbit/s CBR, at -V 2 and as MPEG-2 at 22.05 kHz, and as Layer II by
# twolame. Each decoder runs as a program writing raw 16-bit samples to
# /dev/null; the CPU time (user + sys) is the median of several runs.
# libmpg123 runs inside tunebox (`--decoder system`), so the start-up both
# tunebox runs share cancels out of their ratio, and a file of minutes
# keeps that start-up small beside the decoding. The speed column is
# libmpg123's CPU time over the decoder's: above 1 is faster.
#
#   bench/decoder_side_by_side.sh [BUILD_DIR MINUTES RUNS]
#   (default build 5 5)
set -euo pipefail
cd "$(dirname "$0")/.."
tunebox=$PWD/${1:-build}/src/tunebox
minutes=${2:-5}
runs=${3:-5}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# Ten-second phrases, each a little different: a sustained chord over a
# bass, a drum-like noise hit, plucked notes and a breath of hiss.
phrase() {
    local i=$1 root=$((130 + (i * 53) % 260))
    sox -n -r 44100 -c 2 -b 16 "phrase$i.wav" \
        synth 4 sine "$root" sine $((root * 5 / 4)) sine $((root * 3 / 2)) \
        square $((root / 2)) vol 0.3 : \
        synth 0.4 brownnoise fade 0 0.4 0.35 vol 0.8 : \
        synth 3.6 pluck $((root * 2)) pluck $((root * 3)) vol 0.8 : \
        synth 2 pinknoise sine $((root * 8)) fade 0.5 2 1 vol 0.3
}
phrases=$((minutes * 6))
for ((i = 0; i < phrases; i++)); do
    phrase "$i"
done
sox phrase*.wav music.wav
rm -f phrase*.wav
sox music.wav -r 22050 music22.wav

lame --quiet -b 128 music.wav cbr128.mp3
lame --quiet -V 2 music.wav vbr2.mp3
lame --quiet -b 64 music22.wav mpeg2_22k.mp3
twolame --quiet -b 192 music.wav layer2.mp2
sox music.wav second.wav trim 0 1
lame --quiet -b 128 second.wav second.mp3

# CPU seconds (user + sys) of one run of the command.
cpu_seconds() {
    /usr/bin/time -f '%U %S' -o cpu.txt "$@" >/dev/null 2>&1
    awk '{ printf "%.3f\n", $1 + $2 }' cpu.txt
}

median_cpu() {
    for ((run = 0; run < runs; run++)); do
        cpu_seconds "$@"
    done | sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'
}

decode() {
    local decoder=$1 file=$2
    case $decoder in
    builtin | system) median_cpu "$tunebox" decode --decoder "$decoder" --raw "$file" - ;;
    mpg123) median_cpu mpg123 -q -s "$file" ;;
    ffmpeg) median_cpu ffmpeg -v error -i "$file" -f s16le -y /dev/null ;;
    esac
}

seconds=$((minutes * 60))
echo "tunebox start-up and a one-second file: $(decode builtin second.mp3) s of CPU"
printf '%-14s %-8s %9s %11s %10s\n' file decoder cpu_s x_realtime speed
for file in cbr128.mp3 vbr2.mp3 mpeg2_22k.mp3 layer2.mp2; do
    peer=$(decode system "$file")
    for decoder in builtin system mpg123 ffmpeg; do
        cpu=$([ "$decoder" = system ] && echo "$peer" || decode "$decoder" "$file")
        awk -v f="$file" -v d="$decoder" -v c="$cpu" -v p="$peer" -v s="$seconds" \
            'BEGIN { printf "%-14s %-8s %9.3f %11.0f %10.2f\n", f, d, c,
                     (c > 0 ? s / c : 0), (c > 0 ? p / c : 0) }'
    done
done
