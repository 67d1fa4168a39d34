#!/usr/bin/env bash
# Repeats the end-to-end delay test (default 20 runs) on each set-up of the
# private test sound server (PulseAudio and PipeWire, 44,100 and 48,000 Hz,
# with the sink kept running and with it idle) and reports, per set-up, the
# error of the position-derived delay against the cross-correlated round
# trip: the worst error of each run, then the median and the worst over all
# runs, in milliseconds.
#
#   scripts/measure-delay.sh [RUNS] [SET-UP...]
#
# A set-up is SERVER:RATE:KEEPALIVE, e.g. pipewire:48000:0; without any, all
# eight are measured.
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-20}
shift || true
setups=("$@")
if [ ${#setups[@]} -eq 0 ]; then
    for server in pulse pipewire; do
        for rate in 44100 48000; do
            setups+=("$server:$rate:1" "$server:$rate:0")
        done
    done
fi
export TUNEBOX_TEST_AUDIO_DIR=${TUNEBOX_TEST_AUDIO_DIR:-/tmp/tunebox-measure-delay}
trap 'bash scripts/test-audio-server.sh stop' EXIT

# Without the keep-alive stream each run waits until the sink has fallen
# asleep (PulseAudio suspends it after 1 s here, WirePlumber after 5 s).
idle_wait() {
    case "$keepalive:$server" in
        0:pulse) sleep 1.5 ;;
        0:pipewire) sleep 6 ;;
    esac
}

measure() {
    for _ in $(seq "$runs"); do
        idle_wait
        ./build/tests/tunebox_test_e2e --gtest_filter='*PositionDelayMatches*' |
            grep '^\[ delay \]' || true
    done | tee -a /dev/stderr | sed 's/.*worst error \([0-9.e-]*\) ms/\1/' | sort -g |
        awk '{ v[NR] = $1; if ($1 > 2) over++ }
             END { printf "runs %d, median %.3f ms, worst %.3f ms, runs over 2 ms: %d\n",
                          NR, v[int((NR + 1) / 2)], v[NR], over }'
}

for setup in "${setups[@]}"; do
    IFS=: read -r server rate keepalive <<<"$setup"
    export TUNEBOX_TEST_SERVER=$server TUNEBOX_TEST_RATE=$rate TUNEBOX_TEST_KEEPALIVE=$keepalive
    bash scripts/test-audio-server.sh start
    eval "$(bash scripts/test-audio-server.sh env)"
    echo "== $setup" >&2
    printf '%-22s %s\n' "$setup" "$(measure)"
    bash scripts/test-audio-server.sh stop
done
