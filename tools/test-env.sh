# Sourced by the test scripts: a private PulseAudio server with a float32
# null sink, and an Xvfb display, both stopped again when the script exits.
#   source tools/test-env.sh; start_test_env
# Exports XDG_RUNTIME_DIR, PULSE_SERVER, DISPLAY and TIVORA_NULL_SINK.

TIVORA_NULL_SINK=tivora_null
export TIVORA_NULL_SINK

start_pulse() {
    TIVORA_PULSE_DIR=$(mktemp -d /tmp/tivora-pulse.XXXXXX)
    export XDG_RUNTIME_DIR=$TIVORA_PULSE_DIR
    export PULSE_RUNTIME_PATH=$TIVORA_PULSE_DIR/pulse
    export HOME=${HOME:-/root}
    mkdir -p "$PULSE_RUNTIME_PATH"
    # As root pulseaudio warns about running in system mode and runs anyway.
    pulseaudio -n --daemonize=no --exit-idle-time=-1 --disallow-exit \
        --load="module-native-protocol-unix socket=$PULSE_RUNTIME_PATH/native auth-anonymous=1" \
        --load="module-null-sink sink_name=$TIVORA_NULL_SINK format=float32le rate=44100 channels=2" \
        >"$TIVORA_PULSE_DIR/pulseaudio.log" 2>&1 &
    TIVORA_PULSE_PID=$!
    export PULSE_SERVER=unix:$PULSE_RUNTIME_PATH/native
    for _ in $(seq 1 100); do
        if pactl info >/dev/null 2>&1; then
            pactl set-default-sink "$TIVORA_NULL_SINK" >/dev/null 2>&1 || true
            return 0
        fi
        sleep 0.1
    done
    echo "PulseAudio did not start:" >&2
    cat "$TIVORA_PULSE_DIR/pulseaudio.log" >&2
    return 1
}

start_xvfb() {
    local n
    for n in $(seq 91 120); do
        [ -e /tmp/.X$n-lock ] && continue
        Xvfb :$n -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 &
        TIVORA_XVFB_PID=$!
        export DISPLAY=:$n
        for _ in $(seq 1 50); do
            [ -e /tmp/.X11-unix/X$n ] && return 0
            sleep 0.1
        done
    done
    echo "Xvfb did not start" >&2
    return 1
}

stop_test_env() {
    [ -n "${TIVORA_PULSE_PID:-}" ] && kill "$TIVORA_PULSE_PID" 2>/dev/null && wait "$TIVORA_PULSE_PID" 2>/dev/null
    [ -n "${TIVORA_XVFB_PID:-}" ] && kill "$TIVORA_XVFB_PID" 2>/dev/null && wait "$TIVORA_XVFB_PID" 2>/dev/null
    [ -n "${TIVORA_PULSE_DIR:-}" ] && rm -rf "$TIVORA_PULSE_DIR"
    TIVORA_PULSE_PID= TIVORA_XVFB_PID= TIVORA_PULSE_DIR=
    return 0
}

start_test_env() {
    trap stop_test_env EXIT
    start_pulse
    start_xvfb
}
