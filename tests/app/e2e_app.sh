#!/usr/bin/env bash
# The installed program as a user starts it: `tivora DISC` on the X server,
# Space pressed through the window system, and what reaches the null sink
# compared with the image (the first track, past the fade-in, bit for bit).
# Usage: e2e_app.sh <build dir>; needs DISPLAY and TIVORA_NULL_SINK.
set -euo pipefail
build=$1
if [ -z "${DISPLAY:-}" ] || [ -z "${TIVORA_NULL_SINK:-}" ]; then
    echo "SKIP: needs the test environment (tools/test-env.sh)"
    exit 0
fi
work=$(mktemp -d)
app= rec=
trap 'kill $app $rec 2>/dev/null || true; rm -rf "$work"' EXIT
"$build/tools/mkddp/tivora-mkddp" test "$work/disc" --tracks 2 --seconds 6 >/dev/null
export XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data

# One run: start, play, record, compare. Exit status of the comparison:
# 0 bit for bit, 1 wrong, 3 silence where audio should be (a dropout).
attempt() {
    rm -f "$work/rec.raw"
    # The recorder runs first: a null sink with a listener at low latency
    # renders in small blocks, so the player's stream flows from the start.
    parec --device="$TIVORA_NULL_SINK.monitor" --format=float32le --rate=44100 --channels=2 \
        --raw --latency-msec=20 "$work/rec.raw" &
    rec=$!
    "$build/app/tivora" "$work/disc" >"$work/app.log" 2>&1 &
    app=$!
    local wid=
    for _ in $(seq 1 50); do
        wid=$(xdotool search --name '^Tivora$' 2>/dev/null | head -1 || true)
        [ -n "$wid" ] && break
        sleep 0.1
    done
    [ -n "$wid" ] || { echo "FAIL: no window"; cat "$work/app.log"; return 1; }
    sleep 1.5
    xdotool windowfocus --sync "$wid" 2>/dev/null || true
    xdotool key --window "$wid" space
    sleep 3
    mkdir -p "$build/screenshots"
    import -window root "$build/screenshots/app-playing.png" || true
    kill $rec; wait $rec 2>/dev/null || true
    kill $app; wait $app 2>/dev/null || true
    rec= app=
    python3 - "$work/disc/IMAGE.DAT" "$work/rec.raw" <<'PY'
import struct, sys
image = open(sys.argv[1], "rb").read()
rec = open(sys.argv[2], "rb").read()
floats = struct.unpack("<%df" % (len(rec) // 4), rec[: len(rec) // 4 * 4])
samples = struct.unpack("<%dh" % (len(image) // 2), image)
# the float the device must get for each image sample, rounded to 32 bits
scale = struct.unpack("<f", struct.pack("<f", 3.051851e-5))[0]
def expected(i):
    return struct.unpack("<f", struct.pack("<f", samples[i] * scale))[0]
start = 2 * 44100 * 2  # the first track starts after a 2 s pause (in samples)
probe = [expected(start + 2000 + k) for k in range(400)]
for at in range(0, len(floats) - 400, 2):
    if floats[at] == probe[0] and list(floats[at:at + 400]) == probe:
        n = 0
        while at + n < len(floats) and start + 2000 + n < len(samples) and floats[at + n] == expected(start + 2000 + n):
            n += 1
        print("matched %d samples (%.2f s) bit for bit" % (n, n / 88200))
        if n > 88200:
            sys.exit(0)
        sys.exit(3 if floats[at + n - n % 2:at + n - n % 2 + 2] == (0.0, 0.0) else 1)
print("FAIL: the first track was not found in the recording")
# A run of 10 ms of exact silence after the audio began is a dropout: the
# test pattern is never silent.
frames = [floats[i:i + 2] == (0.0, 0.0) for i in range(0, len(floats) - 1, 2)]
begun = frames.index(False) if False in frames else len(frames)
run = 0
for silent in frames[begun:]:
    run = run + 1 if silent else 0
    if run >= 441:
        sys.exit(3)
sys.exit(1)
PY
}

# A stall of the whole machine longer than the sound server's buffer makes
# the server play silence in place of the stream; such a run is tried again.
for n in 1 2 3; do
    status=0
    attempt || status=$?
    [ $status -eq 3 ] || exit $status
    echo "attempt $n: the sound server dropped audio; trying again"
done
echo "FAIL: the sound server dropped audio in every attempt"
exit 1
