#!/usr/bin/env bash
# Accompaniments read through libsndfile, converted to native PCM (44,100 Hz,
# 16-bit stereo) by tunebox and by sox side by side on the same files: a
# music-like signal of some minutes as FLAC and Ogg Vorbis at 44.1 kHz, and
# as FLAC at 48 kHz, which both resample (sox's default rate effect is
# soxr's high quality, as tunebox's). Each converter runs as a program
# writing a WAV file to /dev/null; the CPU time (user + sys) is the median
# of several runs. x_realtime is the playing time over the CPU time; the
# speed column is sox's CPU time over tunebox's: above 1 is faster.
#
#   bench/formats_side_by_side.sh [BUILD_DIR MINUTES RUNS]
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
sox music.wav music.flac
sox music.wav -r 48000 music48k.flac
ffmpeg -v error -i music.wav -c:a libvorbis -q:a 5 music.ogg
rm music.wav

convert() {
    case $1 in
    tunebox) median_cpu "$tunebox" decode "$2" - ;;
    sox) median_cpu sox "$2" -r 44100 -c 2 -b 16 -t wav - ;;
    esac
}

seconds=$((minutes * 60))
printf '%-16s %-8s %9s %11s %10s\n' file program cpu_s x_realtime speed
for file in music.flac music48k.flac music.ogg; do
    peer=$(convert sox "$file")
    for program in tunebox sox; do
        cpu=$([ "$program" = sox ] && echo "$peer" || convert "$program" "$file")
        print_row "$file" "$program" "$cpu" "$peer" "$seconds"
    done
done
