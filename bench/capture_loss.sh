#!/usr/bin/env bash
# A real-time take through the private test sound server while every core is
# kept busy: reports the capture blocks lost (refused by the capture ring),
# the voice-ring overflows in the log, and the take's length against the
# accompaniment's.
#
#   bench/capture_loss.sh [SECONDS]   (default 300; needs ./build)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
seconds=${1:-300}
work=$(mktemp -d)
export TUNEBOX_TEST_AUDIO_DIR=$work/server
busy=()
cleanup() {
    for pid in "${busy[@]}"; do kill "$pid" 2>/dev/null || true; done
    bash "$root/scripts/test-audio-server.sh" stop
    rm -rf "$work"
}
trap cleanup EXIT
bash scripts/test-audio-server.sh start
eval "$(bash scripts/test-audio-server.sh env)"
sox -n -r 44100 -c 2 -b 16 "$work/song.wav" synth "$seconds" sine 440 vol 0.3

for _ in $(seq "$(nproc)"); do
    (while :; do :; done) &
    busy+=($!)
done
cd "$work"
"$root/build/src/tunebox" record --accompaniment song.wav --output take.wav --no-echo
echo "busy cores: ${#busy[@]}"
overflows=0
[ -f tunebox.log ] && overflows=$(grep -ac "ﾊﾞｯﾌｧｵｰﾊﾞｰﾌﾛｰ" tunebox.log || true)
echo "voice-ring overflows logged: $overflows"
"$root/build/src/tunebox" info song.wav | grep length | sed 's/^/accompaniment /'
"$root/build/src/tunebox" info take.wav | grep length | sed 's/^/take /'
