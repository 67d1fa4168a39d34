#!/usr/bin/env bash
# A private sound server for tests and CI: a stereo null sink as the default
# output, its monitor as the default input, on a runtime directory of its own
# under /tmp. It never touches a user's own server.
#
#   scripts/test-audio-server.sh start   start it (does nothing if it runs)
#   scripts/test-audio-server.sh stop    stop it and everything it started
#   scripts/test-audio-server.sh env     print the exports that reach it
#
# The set-up is chosen by variables, read at start (stop and env work for any):
#   TUNEBOX_TEST_SERVER     pulse (default) or pipewire (pipewire-pulse with
#                           WirePlumber and a private session bus)
#   TUNEBOX_TEST_RATE       the sink's rate: 44100 (default) or 48000; on
#                           PipeWire also the graph's clock rate
#   TUNEBOX_TEST_KEEPALIVE  1 (default): a silent stream keeps the sink
#                           running from the start, as a sound card does;
#                           0: the sink sleeps when idle and must wake up
#   TUNEBOX_TEST_DELAY_MS   0 (default), or a delay the positions cannot see:
#                           the input becomes the monitor of a second null
#                           sink fed from the first through module-loopback
#                           with this latency, as a late device would be
#   TUNEBOX_TEST_QUANTUM    PipeWire only: the graph cycle in frames, held
#                           fixed (unset: PipeWire chooses it from the
#                           streams' latencies, 128 frames with the keep-alive)
set -euo pipefail

base=${TUNEBOX_TEST_AUDIO_DIR:-/tmp/tunebox-test-audio}
runtime=$base/runtime
socket=$runtime/native
kind=${TUNEBOX_TEST_SERVER:-pulse}
rate=${TUNEBOX_TEST_RATE:-44100}
keepalive=${TUNEBOX_TEST_KEEPALIVE:-1}
delay_ms=${TUNEBOX_TEST_DELAY_MS:-0}
quantum=${TUNEBOX_TEST_QUANTUM:-}
# Processes started for the server, stopped in reverse order.
started=(keepalive pipewire-pulse wireplumber pipewire dbus)

server_env() {
    echo "export PULSE_SERVER=unix:$socket"
    echo "export PULSE_RUNTIME_PATH=$runtime"
    echo "export XDG_RUNTIME_DIR=$runtime"
    echo "export PULSE_CLIENTCONFIG=$base/client.conf"
}

server_vars=(PULSE_SERVER="unix:$socket" PULSE_RUNTIME_PATH="$runtime" XDG_RUNTIME_DIR="$runtime"
    PULSE_CLIENTCONFIG="$base/client.conf" HOME="$base" XDG_CONFIG_HOME="$base/config"
    DBUS_SESSION_BUS_ADDRESS="unix:path=$runtime/bus")

with_server_env() { env "${server_vars[@]}" "$@"; }

reachable() { with_server_env pactl info >/dev/null 2>&1; }

# Starts a command in the background under the server's environment and
# records its process id under the given name.
spawn() {
    local name=$1
    shift
    # exec: the recorded id is the program's own, not a shell's around it.
    (exec env "${server_vars[@]}" "$@") >>"$base/$name.log" 2>&1 &
    echo $! >"$base/$name.pid"
}

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

wait_reachable() {
    for _ in $(seq 100); do
        reachable && return 0
        sleep 0.1
    done
    echo "test audio server did not start; see the logs in $base" >&2
    return 1
}

check_choice() {
    case "$kind:$rate:$keepalive" in
        pulse:44100:[01] | pulse:48000:[01] | pipewire:44100:[01] | pipewire:48000:[01]) ;;
        *)
            echo "unknown test server set-up: $kind at $rate Hz, keep-alive $keepalive" >&2
            exit 2
            ;;
    esac
    [[ $delay_ms =~ ^[0-9]+$ ]] || {
        echo "TUNEBOX_TEST_DELAY_MS is not a whole number of milliseconds: $delay_ms" >&2
        exit 2
    }
    [[ -z $quantum || ($kind == pipewire && $quantum =~ ^[0-9]+$) ]] || {
        echo "TUNEBOX_TEST_QUANTUM needs PipeWire and a whole number of frames: $quantum" >&2
        exit 2
    }
}

start_pulse() {
    # Without the keep-alive stream the sink is suspended after a second of
    # silence, as a desktop server does with an idle card.
    local idle=""
    [ "$keepalive" = 1 ] || idle="load-module module-suspend-on-idle timeout=1"
    cat >"$base/server.pa" <<PA
load-module module-native-protocol-unix socket=$socket auth-anonymous=1
load-module module-null-sink sink_name=tunebox_null rate=$rate channels=2 format=s16le norewinds=1 sink_properties=device.description=TuneboxTestSink
$idle
PA
    # Runs as root in containers and CI; --system=false keeps it a private
    # per-user server on our own runtime directory. A desktop's sound server
    # runs at raised (real-time) priority; so does this one, or a busy machine
    # starves it and the null sink's clock falls behind the streams' timing.
    with_server_env pulseaudio --daemonize=yes --system=false --exit-idle-time=-1 \
        --disallow-exit=no -n -F "$base/server.pa" --use-pid-file=yes \
        --realtime=yes --high-priority=yes --log-target="file:$base/server.log"
    wait_reachable
    cp "$runtime/pid" "$base/pulseaudio.pid" 2>/dev/null || true
}

start_pipewire() {
    local conf=$base/config/pipewire
    mkdir -p "$conf/pipewire.conf.d" "$conf/pipewire-pulse.conf.d" "$base/config/wireplumber"
    # The graph runs at the set-up's rate only; streams of another rate are
    # resampled into it, as on a desktop whose card runs at that rate.
    local fixed_cycle=""
    [ -z "$quantum" ] || fixed_cycle="default.clock.quantum = $quantum
    default.clock.min-quantum = $quantum
    default.clock.max-quantum = $quantum"
    cat >"$conf/pipewire.conf.d/tunebox.conf" <<CONF
context.properties = {
    default.clock.rate = $rate
    default.clock.allowed-rates = [ $rate ]
    $fixed_cycle
}
CONF
    cat >"$conf/pipewire-pulse.conf.d/tunebox.conf" <<CONF
pulse.properties = {
    server.address = [ "unix:$socket" ]
}
CONF
    # WirePlumber wants a session bus; a private one keeps it off the user's.
    with_server_env dbus-daemon --session --address="unix:path=$runtime/bus" --fork \
        --print-pid >"$base/dbus.pid"
    spawn pipewire pipewire
    for _ in $(seq 50); do
        [ -S "$runtime/pipewire-0" ] && break
        sleep 0.1
    done
    spawn wireplumber wireplumber
    spawn pipewire-pulse pipewire-pulse
    wait_reachable
    with_server_env pactl load-module module-null-sink sink_name=tunebox_null rate="$rate" \
        channels=2 format=s16le sink_properties=device.description=TuneboxTestSink >/dev/null
    if [ "$keepalive" = 1 ]; then
        # WirePlumber suspends idle nodes after a few seconds.
        with_server_env pactl suspend-sink tunebox_null 0 >/dev/null 2>&1 || true
    fi
}

# A second null sink fed from the first through a loopback of fixed latency;
# its monitor is the input, late by the loopback's latency.
add_hidden_delay() {
    with_server_env pactl load-module module-null-sink sink_name=tunebox_late rate="$rate" \
        channels=2 format=s16le sink_properties=device.description=TuneboxLateSink >/dev/null
    with_server_env pactl load-module module-loopback source=tunebox_null.monitor \
        sink=tunebox_late latency_msec="$delay_ms" >/dev/null
}

start() {
    check_choice
    if reachable; then
        return 0
    fi
    mkdir -p "$runtime" "$base/config"
    chmod 700 "$runtime"
    printf 'autospawn = no\n' >"$base/client.conf"
    "start_$kind"
    local input=tunebox_null.monitor
    if [ "$delay_ms" -gt 0 ]; then
        add_hidden_delay
        input=tunebox_late.monitor
    fi
    with_server_env pactl set-default-sink tunebox_null
    with_server_env pactl set-default-source "$input"
    if [ "$keepalive" = 1 ]; then
        spawn keepalive pacat --playback --device=tunebox_null --format=s16le --rate="$rate" \
            --channels=2 --client-name=tunebox-keepalive --stream-name=silence \
            --latency-msec=20 --raw /dev/zero
    fi
}

stop() {
    if [ -f "$base/pulseaudio.pid" ] && reachable; then
        with_server_env pactl exit >/dev/null 2>&1 || true
    fi
    kill_recorded "$base/pulseaudio.pid"
    for name in "${started[@]}"; do
        kill_recorded "$base/$name.pid"
    done
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
