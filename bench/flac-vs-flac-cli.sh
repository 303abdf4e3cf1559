#!/usr/bin/env bash
# Times `tivora-ddp export --format flac` of a whole 74-minute disc against
# the flac command (level 5) run over the same tracks as WAV files one after
# the other: the export encodes its tracks in parallel, one thread a core,
# straight from the image. The WAVs are written by the WAV export first and
# are not part of the flac command's time; both sides start from a warm page
# cache.
#   bench/flac-vs-flac-cli.sh build/tools
# RUNS (default 3) timed runs each, the median printed; MINUTES (default 74)
# the disc's length. WORK (default a new folder under /tmp) must have room for
# the image, its WAVs and two sets of FLACs, about 2.5 GB.
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
start_tools_bench flac 3 "$@"
command -v flac >/dev/null || { echo "the flac command is needed (Debian package flac)" >&2; exit 2; }

# Every run starts with an empty output folder and the dirty pages written out.
before_run() {
    rm -rf "$WORK/out"
    mkdir -p "$WORK/out"
    sync
}

flac_one_by_one() {
    local wav
    for wav in "$WORK"/wav/*.wav; do
        flac -5 -s -f -o "$WORK/out/$(basename "$wav" .wav).flac" "$wav" || return 1
    done
}

disc=$WORK/disc
"$MKDDP" test "$disc" --minutes "$MINUTES" >/dev/null || { echo "mkddp failed" >&2; exit 1; }
"$DDP" export "$disc" "$WORK/wav" >/dev/null 2>&1 || { echo "WAV export failed" >&2; exit 1; }
cat "$disc"/IMAGE*.DAT "$WORK"/wav/*.wav >/dev/null # warm the cache
echo "== $MINUTES-minute disc, $(ls "$WORK"/wav/*.wav | wc -l) tracks, $(nproc) cores, median of $RUNS runs"

t=() f=()
for ((i = 0; i < RUNS; ++i)) {
    t+=("$(timed "$DDP" export "$disc" "$WORK/out" --format flac)")
    f+=("$(timed flac_one_by_one)")
}
if printf '%s\n' "${t[@]}" "${f[@]}" | grep -q failed; then
    echo "a run failed" >&2
    exit 1
fi
tm=$(printf '%s\n' "${t[@]}" | median)
fm=$(printf '%s\n' "${f[@]}" | median)
printf '  %-44s %8.3f s\n' "tivora-ddp export --format flac" "$tm"
printf '  %-44s %8.3f s\n' "flac -5, one track after the other" "$fm"
printf '  %-44s %8.2f x\n' "speed-up" "$(echo "$fm / $tm" | bc -l)"
