#!/usr/bin/env bash
# Times `tivora-ddp analyze` of a whole 74-minute disc (every track and the
# disc: integrated loudness, loudness range, maxima, sample and true peak,
# clipped runs) against `ffmpeg -af ebur128=peak=true` over the same audio as
# one WAV, side by side in one run with a warm page cache, and the peak
# memory of both. The baseline for memory is `tivora-ddp info` on the same
# disc: what the program holds before it measures anything. Two more lines
# say what two cores can give at all here: two ffmpeg runs at once against
# one, and the analysis held to one core.
#   bench/analyze-vs-ffmpeg.sh build/tools
# RUNS (default 5) timed runs each, the median printed. WORK (default a new
# folder under /tmp) must have room for the image twice, about 1.6 GB.
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
start_tools_bench analyze 5 "$@"
command -v ffmpeg >/dev/null || { echo "ffmpeg is missing (tools/install-deps.sh)" >&2; exit 2; }

peak_kib() { # command...: the maximum resident set size in KiB
    /usr/bin/time -v "$@" 2>&1 >/dev/null | awk -F: '/Maximum resident set size/ { gsub(/ /, "", $2); print $2 }'
}

disc=$WORK/disc
"$MKDDP" test "$disc" --minutes "$MINUTES" >/dev/null || { echo "mkddp failed" >&2; exit 1; }
bytes=$(wc -c <"$disc/IMAGE.DAT")
# The same samples as one WAV: a 44-byte header, then the image.
wav=$WORK/disc.wav
python3 - "$bytes" "$wav" <<'PY'
import struct, sys
n = int(sys.argv[1])
with open(sys.argv[2], "wb") as f:
    f.write(b"RIFF" + struct.pack("<I", 36 + n) + b"WAVEfmt " +
            struct.pack("<IHHIIHH", 16, 1, 2, 44100, 176400, 4, 16) + b"data" + struct.pack("<I", n))
PY
cat "$disc/IMAGE.DAT" >>"$wav"
cat "$disc/IMAGE.DAT" "$wav" >/dev/null # warm the cache

echo "== $MINUTES-minute disc, $bytes bytes, $(nproc) cores, median of $RUNS runs"
a=() f=()
for ((i = 0; i < RUNS; ++i)); do
    a+=("$(timed "$DDP" analyze "$disc")")
    f+=("$(timed ffmpeg -nostdin -hide_banner -nostats -i "$wav" -af ebur128=peak=true -f null -)")
done
am=$(printf '%s\n' "${a[@]}" | median)
fm=$(printf '%s\n' "${f[@]}" | median)
printf '  %-34s %8.3f s   runs: %s\n' "tivora-ddp analyze" "$am" "$(printf '%.3f ' "${a[@]}")"
printf '  %-34s %8.3f s   runs: %s\n' "ffmpeg -af ebur128=peak=true" "$fm" "$(printf '%.3f ' "${f[@]}")"
printf '  %-34s %8.2f x\n' "ffmpeg / analyze" "$(echo "$fm / $am" | bc -l)"

# What two cores can give at all: the same ffmpeg run twice at once against
# once alone, and the analysis held to one core against ffmpeg (the work
# per core of libebur128 against ffmpeg's own meter).
ffmpeg_run=(ffmpeg -nostdin -hide_banner -nostats -i "$wav" -af ebur128=peak=true -f null -)
pair_start=$(now)
"${ffmpeg_run[@]}" >/dev/null 2>&1 &
"${ffmpeg_run[@]}" >/dev/null 2>&1
wait
pair=$(echo "$(now) - $pair_start" | bc -l)
one=$(timed taskset -c 0 "$DDP" analyze "$disc")
printf '  %-34s %8.3f s   (two cores give %.2f x one)\n' "two ffmpeg runs side by side" "$pair" \
    "$(echo "2 * $fm / $pair" | bc -l)"
printf '  %-34s %8.3f s   (%.2f x ffmpeg'"'"'s time)\n' "tivora-ddp analyze on one core" "$one" \
    "$(echo "$one / $fm" | bc -l)"

info_kib=$(peak_kib "$DDP" info "$disc")
analyze_kib=$(peak_kib "$DDP" analyze "$disc")
ffmpeg_kib=$(peak_kib ffmpeg -nostdin -hide_banner -nostats -i "$wav" -af ebur128=peak=true -f null -)
printf '  %-34s %8d KiB\n' "peak memory, tivora-ddp info" "$info_kib"
printf '  %-34s %8d KiB   (%d KiB above info)\n' "peak memory, tivora-ddp analyze" "$analyze_kib" \
    "$((analyze_kib - info_kib))"
printf '  %-34s %8d KiB\n' "peak memory, ffmpeg" "$ffmpeg_kib"
