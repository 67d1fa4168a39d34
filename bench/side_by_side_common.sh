# Shared by the side-by-side benchmark scripts, sourced in their scratch
# folder: the music they convert, and the CPU time of one program run.

# Ten-second phrases, each a little different, so that codecs meet music
# rather than one steady tone: a sustained chord over a bass, a drum-like
# noise hit, plucked notes and a breath of hiss.
phrase() {
    local i=$1 root=$((130 + (i * 53) % 260))
    sox -n -r 44100 -c 2 -b 16 "phrase$i.wav" \
        synth 4 sine "$root" sine $((root * 5 / 4)) sine $((root * 3 / 2)) \
        square $((root / 2)) vol 0.3 : \
        synth 0.4 brownnoise fade 0 0.4 0.35 vol 0.8 : \
        synth 3.6 pluck $((root * 2)) pluck $((root * 3)) vol 0.8 : \
        synth 2 pinknoise sine $((root * 8)) fade 0.5 2 1 vol 0.3
}

# music.wav, MINUTES long.
make_music() {
    local minutes=$1
    for ((i = 0; i < minutes * 6; i++)); do
        phrase "$i"
    done
    sox phrase*.wav music.wav
    rm -f phrase*.wav
}

# CPU seconds (user + sys) of one run of the command.
cpu_seconds() {
    /usr/bin/time -f '%U %S' -o cpu.txt "$@" >/dev/null 2>&1
    awk '{ printf "%.3f\n", $1 + $2 }' cpu.txt
}

# The median over $runs runs.
median_cpu() {
    for ((run = 0; run < runs; run++)); do
        cpu_seconds "$@"
    done | sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'
}

# One row: FILE PROGRAM CPU PEER_CPU SECONDS, with times real time and the
# peer's CPU time over this program's (above 1 is faster).
print_row() {
    awk -v f="$1" -v d="$2" -v c="$3" -v p="$4" -v s="$5" \
        'BEGIN { printf "%-16s %-8s %9.3f %11.0f %10.2f\n", f, d, c,
                 (c > 0 ? s / c : 0), (c > 0 ? p / c : 0) }'
}
