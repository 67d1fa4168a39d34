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
tunebox=$PWD/${1:-build}/src/tunebox
minutes=${2:-5}
runs=${3:-5}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# Ten-second phrases, each a little different, so the codecs meet music
# rather than one steady tone.
phrase() {
    local i=$1 root=$((130 + (i * 53) % 260))
    sox -n -r 44100 -c 2 -b 16 "phrase$i.wav" \
        synth 4 sine "$root" sine $((root * 5 / 4)) sine $((root * 3 / 2)) \
        square $((root / 2)) vol 0.3 : \
        synth 0.4 brownnoise fade 0 0.4 0.35 vol 0.8 : \
        synth 3.6 pluck $((root * 2)) pluck $((root * 3)) vol 0.8 : \
        synth 2 pinknoise sine $((root * 8)) fade 0.5 2 1 vol 0.3
}
for ((i = 0; i < minutes * 6; i++)); do
    phrase "$i"
done
sox phrase*.wav music.wav
rm -f phrase*.wav
sox music.wav music.flac
sox music.wav -r 48000 music48k.flac
ffmpeg -v error -i music.wav -c:a libvorbis -q:a 5 music.ogg
rm music.wav

cpu_seconds() {
    /usr/bin/time -f '%U %S' -o cpu.txt "$@" >/dev/null 2>&1
    awk '{ printf "%.3f\n", $1 + $2 }' cpu.txt
}

median_cpu() {
    for ((run = 0; run < runs; run++)); do
        cpu_seconds "$@"
    done | sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'
}

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
        awk -v f="$file" -v d="$program" -v c="$cpu" -v p="$peer" -v s="$seconds" \
            'BEGIN { printf "%-16s %-8s %9.3f %11.0f %10.2f\n", f, d, c,
                     (c > 0 ? s / c : 0), (c > 0 ? p / c : 0) }'
    done
done
