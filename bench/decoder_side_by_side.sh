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
bench=$PWD/bench
tunebox=$PWD/${1:-build}/src/tunebox
minutes=${2:-5}
runs=${3:-5}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

source "$bench/side_by_side_common.sh"
make_music "$minutes"
sox music.wav -r 22050 music22.wav

lame --quiet -b 128 music.wav cbr128.mp3
lame --quiet -V 2 music.wav vbr2.mp3
lame --quiet -b 64 music22.wav mpeg2_22k.mp3
twolame --quiet -b 192 music.wav layer2.mp2
sox music.wav second.wav trim 0 1
lame --quiet -b 128 second.wav second.mp3

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
printf '%-16s %-8s %9s %11s %10s\n' file decoder cpu_s x_realtime speed
for file in cbr128.mp3 vbr2.mp3 mpeg2_22k.mp3 layer2.mp2; do
    peer=$(decode system "$file")
    for decoder in builtin system mpg123 ffmpeg; do
        cpu=$([ "$decoder" = system ] && echo "$peer" || decode "$decoder" "$file")
        print_row "$file" "$decoder" "$cpu" "$peer" "$seconds"
    done
done
