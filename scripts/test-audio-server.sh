#!/usr/bin/env bash
# A private PulseAudio server for tests and CI: a 44,100 Hz stereo null sink
# as the default output, its monitor as the default input, on a runtime
# directory of its own under /tmp. It never touches a user's own server.
#
#   scripts/test-audio-server.sh start   start it (does nothing if it runs)
#   scripts/test-audio-server.sh stop    stop it and what it started
#   scripts/test-audio-server.sh env     print the exports that reach it
#
# An idle null sink does not run: its monitor delivers nothing and its clock
# jumps when a stream starts. A silent stream is kept playing into the sink so
# that it runs from the start, as a sound card does.
set -euo pipefail

base=${TUNEBOX_TEST_AUDIO_DIR:-/tmp/tunebox-test-audio}
runtime=$base/runtime
socket=$runtime/native

server_env() {
    echo "export PULSE_SERVER=unix:$socket"
    echo "export PULSE_RUNTIME_PATH=$runtime"
    echo "export XDG_RUNTIME_DIR=$runtime"
    echo "export PULSE_CLIENTCONFIG=$base/client.conf"
}

with_server_env() {
    env PULSE_SERVER="unix:$socket" PULSE_RUNTIME_PATH="$runtime" XDG_RUNTIME_DIR="$runtime" \
        PULSE_CLIENTCONFIG="$base/client.conf" HOME="$base" XDG_CONFIG_HOME="$base/config" "$@"
}

reachable() { with_server_env pactl info >/dev/null 2>&1; }

kill_recorded() {
    local pidfile=$1
    if [ -f "$pidfile" ]; then
        local pid
        pid=$(cat "$pidfile")
        kill "$pid" 2>/dev/null || true
        # Gone, or a zombie waiting for a parent that is no longer ours.
        for _ in $(seq 50); do
            case "$(ps -o stat= -p "$pid" 2>/dev/null)" in
                "" | Z*) break ;;
            esac
            sleep 0.1
        done
        rm -f "$pidfile"
    fi
}

start() {
    if reachable; then
        return 0
    fi
    mkdir -p "$runtime" "$base/config"
    chmod 700 "$runtime"
    printf 'autospawn = no\n' >"$base/client.conf"
    cat >"$base/server.pa" <<PA
load-module module-native-protocol-unix socket=$socket auth-anonymous=1
load-module module-null-sink sink_name=tunebox_null rate=44100 channels=2 format=s16le norewinds=1 sink_properties=device.description=TuneboxTestSink
set-default-sink tunebox_null
set-default-source tunebox_null.monitor
PA
    # Runs as root in containers and CI; --system=false keeps it a private
    # per-user server on our own runtime directory. A desktop's sound server
    # runs at raised (real-time) priority; so does this one, or a busy machine
    # starves it and the null sink's clock falls behind the streams' timing.
    with_server_env pulseaudio --daemonize=yes --system=false --exit-idle-time=-1 \
        --disallow-exit=no -n -F "$base/server.pa" --use-pid-file=yes \
        --realtime=yes --high-priority=yes --log-target="file:$base/server.log"
    for _ in $(seq 50); do
        reachable && break
        sleep 0.1
    done
    if ! reachable; then
        echo "test audio server did not start; see $base/server.log" >&2
        return 1
    fi
    with_server_env pulseaudio --check --use-pid-file=yes 2>/dev/null || true
    cp "$runtime/pid" "$base/server.pid" 2>/dev/null || true
    with_server_env pacat --playback --device=tunebox_null --format=s16le --rate=44100 \
        --channels=2 --client-name=tunebox-keepalive --stream-name=silence --latency-msec=20 \
        </dev/zero >/dev/null 2>&1 &
    echo $! >"$base/keepalive.pid"
}

stop() {
    kill_recorded "$base/keepalive.pid"
    if reachable; then
        with_server_env pactl exit >/dev/null 2>&1 || true
    fi
    kill_recorded "$base/server.pid"
    rm -rf "$runtime"
}

case "${1:-}" in
    start) start ;;
    stop) stop ;;
    env) server_env ;;
    *)
        echo "usage: $0 start|stop|env" >&2
        exit 2
        ;;
esac
