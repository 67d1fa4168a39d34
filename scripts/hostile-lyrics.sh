#!/usr/bin/env bash
# Times how long hostile lyrics keep a song from starting: a 100 MB one-line
# .lrc read by `tunebox lyrics` (no bound there: it is asked to read it) and
# given to `tunebox play`, the largest .lrc play still reads, and a
# random-bytes .cdg beside the song, through the virtual devices. Not part of the default test run. Expects ./build to be
# built; writes into a temporary folder it removes.
set -euo pipefail
cd "$(dirname "$0")/.."
tunebox="$PWD/build/src/tunebox"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cd "$work"
export TUNEBOX_AUDIO=virtual TUNEBOX_VIRTUAL_SPEED=5 XDG_CONFIG_HOME="$work"

{ printf '[00:01.00]'; head -c 100000000 /dev/zero | tr '\0' 'a'; } >huge.lrc
head -c 1048576 huge.lrc >limit.lrc
sox -n -r 44100 -c 2 -b 16 short.wav synth 0.2 sine 440

seconds() { /usr/bin/time -f %e "$@" 2>&1 >/dev/null | tail -1; }
echo "tunebox lyrics huge.lrc (100 MB, one line): $(seconds "$tunebox" lyrics huge.lrc) s"
echo "tunebox lyrics limit.lrc (1 MB, the most read): $(seconds "$tunebox" lyrics limit.lrc) s"
echo "tunebox play short.wav --lyrics huge.lrc:    $(seconds "$tunebox" play short.wav --lyrics huge.lrc) s"
echo "tunebox play short.wav (nothing beside):     $(seconds "$tunebox" play short.wav) s"
head -c 216000 /dev/urandom >short.cdg
echo "tunebox play short.wav (random short.cdg):   $(seconds "$tunebox" play short.wav) s"
